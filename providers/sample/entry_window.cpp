#include "entry_window.h"

#include <commctrl.h>

#include <sstream>
#include <utility>

#include "formats/text_codec.h"
#include "orv/orvcodes.h"
#include "resource.h"

namespace sample {
namespace {

// Makes what stands behind it read from the left, as numbers do, where texts run from the right.
constexpr wchar_t kFromTheLeft[] = L"\u200e";

std::wstring Wide(const std::string& text) {
  const std::u16string wide = formats::ToUtf16(text);
  return {wide.begin(), wide.end()};
}

class EntryWindow final : public kit::Dialog {
 public:
  EntryWindow(const kit::Language& language, const formats::Contact& contact,
              const std::vector<std::string>& members)
      : Dialog(language, IDD_ENTRY), contact_(contact), members_(members) {}

 private:
  void OnShow() override;
  void MakeColumns() const;
  void AddAddress(const formats::ContactAddress& address);
  void Add(UINT label, const std::string& text, const wchar_t* before = L"");
  void AddNumber(UINT label, const std::string& text);
  void AddLine(UINT label, std::wstring value);
  void SetCell(int column, std::wstring text) const;

  const formats::Contact& contact_;
  const std::vector<std::string>& members_;
  int lines_ = 0;
  UINT last_ = 0;  // the label of the line before
};

void EntryWindow::OnShow() {
  SetWindowTextW(Window(), Wide(contact_.name).c_str());
  MakeColumns();
  Add(IDS_COMPANY, contact_.company);
  Add(IDS_DEPARTMENT, contact_.department);
  Add(IDS_TITLE, contact_.title);
  for (const formats::ContactNumber& each : contact_.numbers)
    AddNumber(each.kind == formats::NumberKind::kFax ? IDS_FAX : IDS_TELEPHONE, each.text);
  for (const formats::ContactEmail& each : contact_.emails) AddNumber(IDS_EMAIL, each.text);
  for (const formats::ContactAddress& each : contact_.addresses) AddAddress(each);
  Add(IDS_NOTE, contact_.note);
  for (const std::string& each : members_) Add(IDS_MEMBERS, each);
}

// Labels and what they stand for, beside the bar that scrolls.
void EntryWindow::MakeColumns() const {
  constexpr int kLabelShare = 3;
  RECT inside{};
  GetClientRect(Item(IDC_FACTS), &inside);
  const int room = inside.right - GetSystemMetrics(SM_CXVSCROLL), labels = room / kLabelShare;
  const int widths[] = {labels, room - labels};
  for (int i = 0; i < 2; ++i) {
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH | LVCF_SUBITEM;
    column.cx = widths[i];
    column.iSubItem = i;
    SendMessageW(Item(IDC_FACTS), LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                 reinterpret_cast<LPARAM>(&column));
  }
  constexpr LPARAM kStyle = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP;
  SendMessageW(Item(IDC_FACTS), LVM_SETEXTENDEDLISTVIEWSTYLE, kStyle, kStyle);
}

void EntryWindow::AddAddress(const formats::ContactAddress& address) {
  const char* between = address.postalCode.empty() || address.locality.empty() ? "" : " ";
  const std::string town = address.postalCode + between + address.locality;
  last_ = 0;
  for (const std::string* each :
       {&address.street, &address.extended, &address.postOfficeBox, &town, &address.region, &address.country})
    Add(IDS_ADDRESS, *each);
}

void EntryWindow::AddNumber(UINT label, const std::string& text) {
  last_ = 0;
  Add(label, text, Texts().IsRightToLeft() ? kFromTheLeft : L"");
}

// A line of the list for each of the text.
void EntryWindow::Add(UINT label, const std::string& text, const wchar_t* before) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) AddLine(label, before + Wide(line));
}

// The label stands at the first line of those that follow each other.
void EntryWindow::AddLine(UINT label, std::wstring value) {
  LVITEMW line{};
  line.iItem = lines_;
  SendMessageW(Item(IDC_FACTS), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&line));
  if (label != std::exchange(last_, label)) SetCell(0, Texts().Text(label));
  SetCell(1, std::move(value));
  ++lines_;
}

void EntryWindow::SetCell(int column, std::wstring text) const {
  LVITEMW cell{};
  cell.iSubItem = column;
  cell.pszText = text.data();
  SendMessageW(Item(IDC_FACTS), LVM_SETITEMTEXTW, static_cast<WPARAM>(lines_),
               reinterpret_cast<LPARAM>(&cell));
}

}  // namespace

HRESULT ShowEntry(HWND owner, const kit::Language& language, const formats::Contact& contact,
                  const std::vector<std::string>& members) {
  EntryWindow window(language, contact, members);
  return window.Show(owner) == kit::Dialog::kNotShown ? MAPI_E_CALL_FAILED : S_OK;
}

}  // namespace sample
