#include "tools/orvctl/known_fields.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "tools/orvctl/suggestion.h"

namespace orvctl {
namespace {

struct Fields {
  Command command;
  const char* names;
};

constexpr char kProfile[] = "profile changed dryRun", kService[] = "service uid changed newContacts",
               kContact[] = "id ids name container changed dryRun",
               kList[] = "id name members container changed dryRun";

constexpr Fields kFields[] = {
    {Command::kProfileCreate, kProfile},
    {Command::kProfileDelete, kProfile},
    {Command::kProfileCopy, kProfile},
    {Command::kProfileRename, kProfile},
    {Command::kProfileConfigure, ""},
    {Command::kServiceAdd, kService},
    {Command::kServiceRemove, "service uid changed dryRun"},
    {Command::kServiceSet, kService},
    {Command::kBookRepair, "saved lost moreLost file"},
    {Command::kContactAdd, kContact},
    {Command::kContactEdit, kContact},
    {Command::kContactRemove, "removed numbers container changed dryRun"},
    {Command::kContactCopy, "copied id ids container dryRun"},
    {Command::kGroupAdd, kList},
    {Command::kGroupRemove, kList},
    {Command::kImport,
     "read added updated equal rejected lists seconds container unknownColumns sharedUids dryRun"},
    {Command::kExport, "written lists lost seconds format container dryRun"},
    {Command::kFileCheck, "file format read lists faxNumbers rejected sharedUids unknownColumns"},
    {Command::kFileConvert, "read written lists rejected lost unknownColumns format dryRun"},
    {Command::kUserInfoSet, "properties dryRun"},
    {Command::kHelp, ""}};

constexpr char kResult[] = "result ";

// Those that tell one thing or list several, as their arguments say.
std::string NamesByArguments(const Options& options) {
  switch (options.command) {
    case Command::kProfileDefault:
      return options.profile.empty() && !options.noDefault ? "" : std::string(kResult) + kProfile;
    case Command::kBookDefault:
      return options.containers.empty() ? "" : std::string(kResult) + "name id changed dryRun";
    case Command::kBookPath:
      return options.containers.empty() ? "" : std::string(kResult) + "path changed dryRun";
    case Command::kContactRestore:
      return options.entries.empty() ? "" : std::string(kResult) + "restored container dryRun";
    case Command::kProfileApply:
      return options.json ? std::string(kResult) + "profile changed dryRun changes" : "change";
    case Command::kBookExpand:
      return options.count ? std::string(kResult) + "count missing" : "";
    case Command::kPick:
      return "type name addressType address objectType id";
    default:
      return {};
  }
}

}  // namespace

std::vector<std::string> KnownFields(const Options& options) {
  const auto* const found = std::find_if(std::begin(kFields), std::end(kFields),
                                         [&](const Fields& each) { return each.command == options.command; });
  std::istringstream names(found != std::end(kFields) ? std::string(kResult) + found->names
                                                      : NamesByArguments(options));
  return {std::istream_iterator<std::string>(names), {}};
}

std::string DescribeUnknownField(const std::string& field, const std::vector<std::string>& known) {
  const std::string meant = ClosestWord(field, known);
  std::string text = "there is no field '" + field + "'" +
                     (meant.empty() ? "; there are: " : "; did you mean '" + meant + "'? There are: ");
  for (const std::string& each : known) text.append(&each == &known.front() ? "" : ", ").append(each);
  return text;
}

std::string FindUnknownField(const std::vector<std::string>& asked, const std::vector<std::string>& known) {
  const auto unknown = std::find_if(asked.begin(), asked.end(), [&](const std::string& each) {
    return std::find(known.begin(), known.end(), each) == known.end();
  });
  return unknown == asked.end() ? std::string() : DescribeUnknownField(*unknown, known);
}

}  // namespace orvctl
