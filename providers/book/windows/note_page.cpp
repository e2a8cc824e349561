#include "providers/book/windows/note_page.h"

#include <string_view>

#include "providers/book/text.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

constexpr int kLongestNote = 1'000'000;
constexpr ListView::Column kColumns[] = {{IDS_COLUMN_FIELD, 30}, {IDS_COLUMN_VALUE, 70}};

constexpr struct {
  std::string_view name;
  UINT text;
} kKnownFields[] = {
    {"BDAY", IDS_OTHER_BIRTHDAY},  {"ANNIVERSARY", IDS_OTHER_ANNIVERSARY}, {"NICKNAME", IDS_OTHER_NICKNAME},
    {"URL", IDS_OTHER_WEB},        {"CATEGORIES", IDS_OTHER_CATEGORIES},   {"PHOTO", IDS_OTHER_PHOTO},
    {"IMPP", IDS_OTHER_MESSAGING},
};

// A field that has no word for people keeps its name.
std::wstring FieldText(const kit::Language& texts, const std::string& name) {
  const size_t group = name.find('.');
  const std::string_view bare = std::string_view(name).substr(group == name.npos ? 0 : group + 1);
  for (const auto& each : kKnownFields) {
    if (each.name == bare) return texts.Text(each.text);
  }
  return ToWide(name);
}

// "group.NAME;parameters:value".
std::vector<std::wstring> CellsOf(const kit::Language& texts, const std::string& line) {
  const size_t name = line.find_first_of(":;"), value = line.find(':');
  return {FieldText(texts, line.substr(0, name)),
          value == line.npos ? std::wstring() : ToWide(line.substr(value + 1))};
}

}  // namespace

void NotePage::Prepare() {
  window_.LimitText(IDC_NOTE, kLongestNote);
  ListView(window_, IDC_OTHERS).SetColumns(kColumns);
}

void NotePage::Fill() {
  const Filling filling(isFilling_);
  ShowText(window_, IDC_NOTE, contact_.note);
  std::vector<std::vector<std::wstring>> rows;
  for (const std::string& each : contact_.others) rows.push_back(CellsOf(window_.Texts(), each));
  const ListView list(window_, IDC_OTHERS);
  list.SetRows(rows);
  list.FitColumns(kColumns, rows);
}

void NotePage::Lock() { window_.SetReadOnly(IDC_NOTE, true); }

bool NotePage::OnCommand(int control, int notification) {
  if (control != IDC_NOTE) return false;
  if (notification == EN_CHANGE && !isFilling_) contact_.note = TypedIn(window_, control);
  return true;
}

}  // namespace book
