// Commands that show a window of the library.
#include <objbase.h>

#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// The dialog's file boxes are components, which want this thread to be an apartment.
class Apartment {
 public:
  Apartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~Apartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  HRESULT result_;
};

struct Well {
  ULONG type;
  const WCHAR* title;
};

std::vector<Well> ChooseWells(const Options& options) {
  std::vector<Well> wells;
  if (options.to || (!options.cc && !options.bcc)) wells.push_back({MAPI_TO, L"To"});
  if (options.cc) wells.push_back({MAPI_CC, L"Cc"});
  if (options.bcc) wells.push_back({MAPI_BCC, L"Bcc"});
  return wells;
}

}  // namespace

Report ConfigureProfile(const Library& library, const Options& options) {
  const Apartment apartment;
  Check(library.AdminProfiles()->ConfigureProfile(ToWide(options.profile).c_str(), 0, MAPI_UNICODE),
        "configure profile '" + options.profile + "'");
  return Report::Done("Configured profile '" + options.profile + "'.");
}

Report PickRecipients(const Library& library, const Options& options) {
  if (!library.addressDialog()) throw CommandError(kNoLibrary, "the library has no address dialog");
  const Apartment apartment;
  const Book book(library, options.profile);
  std::vector<ULONG> types;
  std::vector<WideString> texts;
  for (const Well& well : ChooseWells(options)) {
    types.push_back(well.type);
    texts.emplace_back(well.title);
  }
  std::vector<WCHAR*> titles;
  for (WideString& text : texts) titles.push_back(text.data());
  ADRPARM parameters = {};
  parameters.ulFlags = DIALOG_MODAL;
  parameters.cDestFields = static_cast<ULONG>(types.size());
  parameters.lppszDestTitles = titles.data();
  parameters.lpulDestComps = types.data();
  ADRLIST* chosen = nullptr;
  const HRESULT result = library.addressDialog()(0, book.addressBook(), &parameters, &chosen);
  const RecipientsPtr owner = library.Own(chosen);
  Check(result, "choose recipients");
  book.AddAddresses(chosen);
  return Report::Of(RecipientListing(chosen), "No recipient was chosen.");
}

}  // namespace orvctl
