// Recipients that the user chooses in the Address dialog.
#include "tools/orvctl/apartment.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/recipients.h"
#include "tools/orvctl/search.h"
#include "tools/orvctl/sources.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

// The boxes of the dialog, in their order, and its titles, in the shape that it takes.
class Boxes {
 public:
  explicit Boxes(const Options& options) : caption_(Wide(options.caption)), heading_(Wide(options.heading)) {
    const bool isOnlyTo = !options.cc && !options.bcc && !options.ccTitle && !options.bccTitle;
    if (options.to || options.toTitle || isOnlyTo) Add(MAPI_TO, options.toTitle, L"To");
    if (options.cc || options.ccTitle) Add(MAPI_CC, options.ccTitle, L"Cc");
    if (options.bcc || options.bccTitle) Add(MAPI_BCC, options.bccTitle, L"Bcc");
  }

  ULONG first() const { return types_.front(); }

  // Points into this object.
  ADRPARM Parameters() {
    pointers_.clear();
    for (auto& title : titles_) pointers_.push_back(title ? title->data() : nullptr);
    ADRPARM parameters = {};
    parameters.ulFlags = DIALOG_MODAL;
    parameters.lpszCaption = caption_ ? caption_->data() : nullptr;
    parameters.lpszDestWellsTitle = heading_ ? heading_->data() : nullptr;
    parameters.cDestFields = static_cast<ULONG>(types_.size());
    parameters.lppszDestTitles = pointers_.data();
    parameters.lpulDestComps = types_.data();
    return parameters;
  }

 private:
  static std::optional<WideString> Wide(const std::optional<std::string>& text) {
    return text ? std::optional(ToWide(*text)) : std::nullopt;
  }

  // The dialog's own titles, in its language, are those of recipients, copies and hidden copies, in that order.
  void Add(ULONG type, const std::optional<std::string>& title, const WCHAR* otherwise) {
    constexpr ULONG kTypesInOrder[] = {MAPI_TO, MAPI_CC, MAPI_BCC};
    const bool isInItsPlace = kTypesInOrder[types_.size()] == type;
    types_.push_back(type);
    titles_.push_back(title || isInItsPlace ? Wide(title) : WideString(otherwise));
  }

  std::optional<WideString> caption_, heading_;
  std::vector<ULONG> types_;
  std::vector<std::optional<WideString>> titles_;
  std::vector<LPWSTR> pointers_;
};

// An entry that is named by its identifier tells its name and type itself.
Match OpenNamed(const Library& library, const Book& book, const Bytes& entryId, const std::string& text) {
  const ComPtr<IMAPIProp> object = book.Open(entryId, text);
  const Properties properties(library, object.Get(), nullptr, "read the properties of '" + text + "'");
  Match match;
  match.entryId = entryId;
  match.name = TextOf(properties.view(), PR_DISPLAY_NAME_W);
  match.type = properties.view().Number(PR_OBJECT_TYPE);
  return match;
}

Match FindEntry(const Library& library, const Book& book, const std::string& named,
                std::vector<Message>& messages) {
  if (const auto entryId = AsEntryId(named)) return OpenNamed(library, book, *entryId, named);
  return FindNamed(library, book, ChooseContainers(library, book, {}), named, "entry", messages);
}

AddressList Preselected(const Library& library, const Book& book, const std::vector<std::string>& entries,
                        ULONG recipientType, std::vector<Message>& messages) {
  if (entries.empty()) return library.allocator().Own<ADRLIST>();
  AddressList list = library.allocator().Make<ADRLIST>(CbNewADRLIST(entries.size()));
  for (const std::string& named : entries) {
    const Match match = FindEntry(library, book, named, messages);
    AppendRecipient(library.allocator(), *list.Get(), match.entryId, match.name, match.type, recipientType);
  }
  return list;
}

// A list is no recipient of its own: its members have the numbers.
bool HasNumber(const ADRENTRY& recipient) {
  const ValueView values(recipient);
  return values.Number(PR_OBJECT_TYPE) == MAPI_DISTLIST || !TextOf(values, PR_EMAIL_ADDRESS_W).empty();
}

void TellNumberless(const ADRLIST* list, bool isRequired, std::vector<Message>& messages) {
  for (ULONG i = 0; list != nullptr && i < list->cEntries; ++i) {
    if (HasNumber(list->aEntries[i])) continue;
    const std::string name = TextOf(ValueView(list->aEntries[i]), PR_DISPLAY_NAME_W);
    messages.push_back({"'" + name + "' has no number", {}, isRequired ? kProblems : kSuccess});
  }
}

}  // namespace

Report PickRecipients(const Library& library, const Options& options) {
  if (!library.addressDialog()) throw CommandError(kNoLibrary, library.fileName() + " has no address dialog");
  const Apartment apartment;
  const Book book(library, options.profile);
  Boxes boxes(options);
  ADRPARM parameters = boxes.Parameters();
  std::vector<Message> messages;
  AddressList chosen = Preselected(library, book, options.entries, boxes.first(), messages);
  Check(library.addressDialog()(0, book.addressBook(), &parameters, chosen.InOut()), "choose recipients");
  Report report = book.ReportRecipients(chosen.Get(), "No recipient was chosen.");
  report.messages.insert(report.messages.begin(), messages.begin(), messages.end());
  TellNumberless(chosen.Get(), options.requireAddress, report.messages);
  return report;
}

}  // namespace orvctl
