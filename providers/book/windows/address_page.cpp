#include "providers/book/windows/address_page.h"

#include "providers/book/windows/contact_kinds.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

struct Field {
  int control;
  std::string formats::ContactAddress::*text;
};
constexpr Field kFields[] = {{IDC_STREET, &formats::ContactAddress::street},
                             {IDC_EXTENDED, &formats::ContactAddress::extended},
                             {IDC_POST_OFFICE_BOX, &formats::ContactAddress::postOfficeBox},
                             {IDC_POSTAL_CODE, &formats::ContactAddress::postalCode},
                             {IDC_LOCALITY, &formats::ContactAddress::locality},
                             {IDC_REGION, &formats::ContactAddress::region},
                             {IDC_COUNTRY, &formats::ContactAddress::country}};

constexpr int kLongestField = 500;

}  // namespace

void AddressPage::Prepare() {
  FillDropDown(window_, IDC_ADDRESS_KIND, Places());
  for (const Field& each : kFields) window_.LimitText(each.control, kLongestField);
}

void AddressPage::Fill() {
  ShowList();
  Select(contact_.addresses.empty() ? -1 : 0);
}

void AddressPage::Lock() {
  isLocked_ = true;
  for (const Field& each : kFields) window_.SetReadOnly(each.control, true);
  for (const int each : {IDC_ADDRESS_NEW, IDC_ADDRESS_REMOVE, IDC_ADDRESS_KIND}) window_.Enable(each, false);
}

void AddressPage::ShowList() {
  const HWND list = window_.Item(IDC_ADDRESSES);
  const Filling filling(isFilling_);
  SendMessageW(list, LB_RESETCONTENT, 0, 0);
  for (const formats::ContactAddress& each : contact_.addresses)
    SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(LineOf(window_.Texts(), each).c_str()));
  SendMessageW(list, LB_SETCURSEL, static_cast<WPARAM>(selected_), 0);
}

void AddressPage::Select(int row) {
  const Filling filling(isFilling_);
  selected_ = row;
  SendMessageW(window_.Item(IDC_ADDRESSES), LB_SETCURSEL, static_cast<WPARAM>(row), 0);
  formats::ContactAddress none;
  none.place = formats::Place::kWork;
  const formats::ContactAddress& shown = row < 0 ? none : contact_.addresses[static_cast<size_t>(row)];
  for (const Field& each : kFields) ShowText(window_, each.control, shown.*each.text);
  Choose(window_, IDC_ADDRESS_KIND, IndexOf(shown.place));
  window_.Enable(IDC_ADDRESS_REMOVE, row >= 0 && !isLocked_);
}

void AddressPage::SelectListed() {
  Select(static_cast<int>(SendMessageW(window_.Item(IDC_ADDRESSES), LB_GETCURSEL, 0, 0)));
}

formats::ContactAddress& AddressPage::Current() {
  if (selected_ < 0) {
    contact_.addresses.emplace_back().place = PlaceAt(ChosenIn(window_, IDC_ADDRESS_KIND));
    selected_ = static_cast<int>(contact_.addresses.size()) - 1;
    window_.Enable(IDC_ADDRESS_REMOVE, true);
  }
  return contact_.addresses[static_cast<size_t>(selected_)];
}

bool AddressPage::OnField(int control, int notification) {
  for (const Field& each : kFields) {
    if (each.control != control) continue;
    if (notification != EN_CHANGE || isFilling_) return true;
    Current().*each.text = TypedIn(window_, control);
    ShowList();
    return true;
  }
  return false;
}

void AddressPage::Begin() {
  contact_.addresses.emplace_back().place = formats::Place::kWork;
  ShowList();
  Select(static_cast<int>(contact_.addresses.size()) - 1);
  window_.FocusOn(IDC_STREET);
}

void AddressPage::Remove() {
  if (selected_ < 0 || isLocked_) return;
  contact_.addresses.erase(contact_.addresses.begin() + selected_);
  const int last = static_cast<int>(contact_.addresses.size()) - 1;
  selected_ = selected_ < last ? selected_ : last;
  ShowList();
  Select(selected_);
  window_.FocusOn(IDC_ADDRESSES);
}

bool AddressPage::OnCommand(int control, int notification) {
  if (OnField(control, notification)) return true;
  if (control < IDC_ADDRESSES || control > IDC_ADDRESS_KIND) return false;
  if (isFilling_) return true;
  if (control == IDC_ADDRESS_NEW) Begin();
  if (control == IDC_ADDRESS_REMOVE) Remove();
  if (control == IDC_ADDRESSES && notification == LBN_SELCHANGE) SelectListed();
  if (control == IDC_ADDRESS_KIND && notification == CBN_SELCHANGE && selected_ >= 0) {
    Current().place = PlaceAt(ChosenIn(window_, IDC_ADDRESS_KIND));
    ShowList();
  }
  return true;
}

bool AddressPage::OnKey(int control, UINT key) {
  if (control != IDC_ADDRESSES || key != VK_DELETE) return false;
  Remove();
  return true;
}

}  // namespace book
