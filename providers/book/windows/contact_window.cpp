#include "providers/book/windows/contact_window.h"

#include <algorithm>

#include "providers/book/text.h"
#include "providers/book/windows/address_page.h"
#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/entry_window.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/items_page.h"
#include "providers/book/windows/name_page.h"
#include "providers/book/windows/note_page.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"

namespace book {
namespace {

class ContactWindow final : public EntryWindow {
 public:
  ContactWindow(const kit::Language& language, const std::shared_ptr<Store>& store, const Entry& entry,
                uint32_t number);

 private:
  void OnShow() override;
  bool OnCommand(int control, int notification) override;
  LRESULT OnNotify(const NMHDR& header) override;
  bool OnKey(int control, UINT key) override;
  void Refill() override;
  bool HasTyped() const override;
  void TakeTyped() override;
  UINT Fault() const override;
  void AddPages();
  void LockAll();

  const uint32_t number_;
  NamePage names_;
  NumbersPage numbers_;
  EmailsPage emails_;
  AddressPage addresses_;
  NotePage note_;
  ContactPage* const pages_[5];
};

ContactWindow::ContactWindow(const kit::Language& language, const std::shared_ptr<Store>& store,
                             const Entry& entry, uint32_t number)
    : EntryWindow(language, IDD_CONTACT, kContactTopics, store, entry),
      number_(number),
      names_(*this, contact_),
      numbers_(*this, contact_),
      emails_(*this, contact_),
      addresses_(*this, contact_),
      note_(*this, contact_),
      pages_{&names_, &numbers_, &emails_, &addresses_, &note_} {}

void ContactWindow::OnShow() {
  ShowCaption(IDS_CAPTION_OF_CONTACT, IDS_CAPTION_OF_NEW_CONTACT);
  AddPages();
  for (ContactPage* each : pages_) each->Prepare();
  Refill();
  if (IsReadOnly()) LockAll();
  if (number_ != 0) numbers_.SelectKey(number_);
  FocusOn(number_ != 0 ? IDC_NUMBER : IDC_NAME);
  Judge();
}

void ContactWindow::Refill() {
  for (ContactPage* each : pages_) each->Fill();
}

void ContactWindow::AddPages() {
  constexpr struct {
    WORD page;
    UINT title;
  } kPages[] = {{IDD_CONTACT_NAME, IDS_PAGE_NAME},
                {IDD_CONTACT_NUMBERS, IDS_PAGE_NUMBERS},
                {IDD_CONTACT_EMAILS, IDS_PAGE_EMAILS},
                {IDD_CONTACT_ADDRESSES, IDS_PAGE_ADDRESSES},
                {IDD_CONTACT_NOTE, IDS_PAGE_NOTE}};
  for (const auto& each : kPages) AddPage(IDC_TABS, each.page, Texts().Text(each.title));
}

void ContactWindow::LockAll() {
  for (ContactPage* each : pages_) each->Lock();
  LockButtons();
}

bool ContactWindow::OnCommand(int control, int notification) {
  const auto isIts = [&](ContactPage* each) { return each->OnCommand(control, notification); };
  if (std::none_of(std::begin(pages_), std::end(pages_), isIts)) return false;
  if (notification == EN_CHANGE) ReadAsTyped(*this, control);
  Judge();
  return true;
}

LRESULT ContactWindow::OnNotify(const NMHDR& header) {
  for (ContactPage* each : pages_) each->OnNotify(header);
  if (IsSelection(header)) Judge();
  return DrawList(header);
}

bool ContactWindow::OnKey(int control, UINT key) {
  const auto isIts = [&](ContactPage* each) { return each->OnKey(control, key); };
  if (std::none_of(std::begin(pages_), std::end(pages_), isIts)) return false;
  Judge();
  return true;
}

UINT ContactWindow::Fault() const {
  const auto found = std::find_if(std::begin(pages_), std::end(pages_),
                                  [](const ContactPage* each) { return each->Fault() != 0; });
  if (found != std::end(pages_)) return (*found)->Fault();
  return Tidied(contact_).name.empty() ? IDS_FAULT_NO_NAME : 0;
}

bool ContactWindow::HasTyped() const {
  return std::any_of(std::begin(pages_), std::end(pages_),
                     [](const ContactPage* each) { return each->HasTyped(); });
}

void ContactWindow::TakeTyped() {
  for (ContactPage* each : pages_) each->TakeTyped();
}

}  // namespace

HRESULT ShowContact(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                    const EntryKey& key, uint32_t number) {
  Entry entry;
  const HRESULT hr = store->Read(key, &entry);
  return FAILED(hr) ? hr : ContactWindow(language, store, entry, number).Run(owner);
}

HRESULT ShowNewContact(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                       EntryKey* made) {
  const auto showOther = [&](const EntryKey& other) { return ShowContact(owner, language, store, other, 0); };
  return ContactWindow(language, store, Entry{}, 0).RunNew(owner, showOther, made);
}

}  // namespace book
