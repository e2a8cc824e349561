// The user's own details: one set for all profiles, kept by the library.
#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/administration.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

ComPtr<IMailUser> OpenUserInfo(const Library& library, const Options& options) {
  const std::string profile = ProfileName(library, options.profile);
  if (!HasProfile(library, profile)) ThrowNoProfile(profile, MAPI_E_NOT_FOUND);
  if (!library.openUserInfo())
    throw CommandError(kNoLibrary, library.fileName() + " is too old to show the user's own details");
  ULONG type = 0;
  ComPtr<IMailUser> user;
  Receive(user, library.openUserInfo()(nullptr, &type, user.Put()), "open the user's own details");
  return user;
}

bool IsComputed(ULONG tag) { return tag == PR_ENTRYID || tag == PR_OBJECT_TYPE; }

std::vector<OwnedValue> ValuesOf(const Options& options) {
  std::vector<OwnedValue> values;
  for (const FieldValue& field : FieldValues(options.contact)) {
    if (field.tag == PR_NULL) throw CommandError(kFailed, "there is no place for the " + field.what);
    values.push_back(OwnedValue::String(field.tag, field.text));
  }
  for (const std::string& property : options.properties) {
    OwnedValue value = OwnedValue::Parse(property).value();
    if (IsComputed(value.Get().ulPropTag))
      throw CommandError(kUsage, diag::PropTagName(value.Get().ulPropTag) + " cannot be set");
    values.push_back(std::move(value));
  }
  return values;
}

}  // namespace

Report GetUserInfo(const Library& library, const Options& options) {
  const ComPtr<IMailUser> user = OpenUserInfo(library, options);
  const Properties properties(library, user.Get(), nullptr, "read the user's own details");
  Report report = Report::Of({{{"property", "Property"}, {"value", "Value"}}, {}}, "");
  for (const SPropValue& value : properties.view()) {
    const Cell cell = ValueCell(value);
    if (!IsComputed(value.ulPropTag) && !cell.text.empty())
      report.listing.rows.push_back({diag::PropTagName(value.ulPropTag), cell});
  }
  report.sentence = "The user's own details are empty; 'orvctl userinfo set' fills them in.";
  return report;
}

// What is taken away is stored as an empty text: only what was set is written.
Report SetUserInfo(const Library& library, const Options& options) {
  const ComPtr<IMailUser> user = OpenUserInfo(library, options);
  std::vector<OwnedValue> owned = ValuesOf(options);
  std::vector<SPropValue> values;
  Json names = Json::array();
  for (OwnedValue& value : owned) {
    values.push_back(value.Get());
    names.push_back(diag::PropTagName(values.back().ulPropTag));
  }
  const std::string count = std::to_string(values.size());
  Json data{{"properties", names}, {"dryRun", options.dryRun}};
  if (options.dryRun)
    return Report::Done("Would set " + count + " of the user's own details.", std::move(data));
  auto problems = library.allocator().Own<SPropProblemArray>();
  Check(user->SetProps(static_cast<ULONG>(values.size()), values.data(), problems.Put()),
        "set the user's own details");
  if (problems && problems->cProblem != 0) Check(problems->aProblem[0].scode, "set the user's own details");
  Check(user->SaveChanges(KEEP_OPEN_READWRITE), "store the user's own details");
  return Report::Done("Set " + count + " of the user's own details, which all profiles share.",
                      std::move(data));
}

}  // namespace orvctl
