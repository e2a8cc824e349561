#include "ui/address/wells.h"

#include <algorithm>

#include "orv/orvtags.h"
#include "platform/pointer_check.h"
#include "props/foreign_values.h"
#include "ui/access_keys.h"

namespace orv::ui {
namespace {

// Names of this length and longer are cut in the caller's own buffer, for the list and for the caller alike.
constexpr std::size_t kLongName = 65;
constexpr std::size_t kKeptOfLongName = 61;
constexpr WStringView kMarkOfCut = ORV_W("...");
// Behind a title on a button, as on the dialog's own buttons.
constexpr WCHAR kIntoTheWell[] = L" ->";
constexpr WCHAR kFromRightToLeft = 0x202B;
constexpr WCHAR kEndOfDirection = 0x202C;

void ShortenLongName(WCHAR* name) {
  if (WStringView(name).size() < kLongName || !IsWritable(name, kLongName * sizeof *name)) return;
  kMarkOfCut.copy(name + kKeptOfLongName, kMarkOfCut.size());
  name[kKeptOfLongName + kMarkOfCut.size()] = 0;
}

// The arrow points to the well in a mirrored dialog too, whatever letters the title is of.
WString WithArrow(const WString& title, HWND dialog) {
  const WString text = title + kIntoTheWell;
  const bool isMirrored = (GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
  return isMirrored ? kFromRightToLeft + text + kEndOfDirection : text;
}

}  // namespace

Wells::Wells(const ADRPARM& parameters) : parameters_(parameters) {
  std::copy_n(parameters.lpulDestComps, parameters.cDestFields, types_.begin());
}

int Wells::FirstButton() const noexcept {
  const ULONG well = parameters_.nDestFieldFocus;
  return address::kFirstWellButton + (well < parameters_.cDestFields ? static_cast<int>(well) : 0);
}

void Wells::SetTexts() const {
  if (parameters_.lpszDestWellsTitle != nullptr)
    SetText(address::kWellsTitle, parameters_.lpszDestWellsTitle);
  if (parameters_.lppszDestTitles != nullptr) SetTitles();
}

// Keys that the caller chose come first, then those found for the other buttons, then those for the labels; the
// dialog's own texts, which all these replace, are no longer in the way.
void Wells::SetTitles() const {
  ForEachTitle([this](int well, const WString& title) {
    SetText(address::kFirstWellButton + well, HasAccessKey(title) ? WithArrow(title, dialog_) : WString());
    SetText(address::kFirstWellLabel + well, WString());
  });
  ForEachTitle([this](int well, const WString& title) {
    if (HasAccessKey(title)) return;
    SetText(address::kFirstWellButton + well, WithArrow(WithFreeAccessKey(title, dialog_), dialog_));
  });
  ForEachTitle([this](int well, const WString& title) {
    SetText(address::kFirstWellLabel + well, WithFreeAccessKey(WithoutAccessKey(title), dialog_));
  });
}

template <class Action>
void Wells::ForEachTitle(Action action) const {
  for (int well = 0; well < Count(); ++well) {
    if (const WCHAR* title = parameters_.lppszDestTitles[well]) action(well, title);
  }
}

void Wells::SetText(int control, const WString& text) const {
  SetDlgItemTextW(dialog_, control, text.c_str());
}

void Wells::Fill(ADRLIST& list, const EntryIcons& icons) const {
  for (ULONG i = 0; i < list.cEntries; ++i) Add(list.aEntries[i], icons);
}

void Wells::Add(ADRENTRY& entry, const EntryIcons& icons) const {
  const ForeignValues values(entry);
  const SBinary* id = BinaryOf(values.Find(PR_ENTRYID));
  const SPropValue* name = values.Find(PR_DISPLAY_NAME_W);
  const SPropValue* type = values.Find(PR_RECIPIENT_TYPE);
  if (id == nullptr || TextOf(name) == nullptr || type == nullptr) return;
  ShortenLongName(name->Value.lpszW);
  const auto end = types_.begin() + Count();
  const auto well = std::find(types_.begin(), end, NumberOf(type));
  if (well == end) return;
  const HICON icon = icons.For(NumberOf(values.Find(PR_OBJECT_TYPE)));
  At(static_cast<int>(well - types_.begin()))
      .Append(TextOf(name), std::make_unique<EntryItem>(icon, EntryId(*id)));
}

std::vector<ChosenRecipient> Wells::Recipients() const {
  std::vector<ChosenRecipient> recipients;
  for (int well = 0; well < Count(); ++well) {
    const EntryListBox box = At(well);
    for (int line = 0; line < box.Count(); ++line) {
      if (const EntryItem* item = box.ItemAt(line))
        recipients.push_back({item->entryId, types_[static_cast<std::size_t>(well)]});
    }
  }
  return recipients;
}

void Wells::RemoveAll() const {
  for (int well = 0; well < Count(); ++well) At(well).RemoveAll();
}

}  // namespace orv::ui
