#include "providers/book/windows/contact_window.h"

#include <algorithm>

#include "providers/book/text.h"
#include "providers/book/windows/address_page.h"
#include "providers/book/windows/conflict_window.h"
#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/items_page.h"
#include "providers/book/windows/name_page.h"
#include "providers/book/windows/note_page.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"

namespace book {
namespace {

class ContactWindow final : public kit::Dialog {
 public:
  // `entry` without a version is a new one.
  ContactWindow(const kit::Language& language, const std::shared_ptr<Store>& store, const Entry& entry,
                uint32_t number);

  HRESULT Run(HWND owner);
  const EntryKey& Key() const { return entry_.key; }
  // The user wants to see this one instead.
  bool OpensOther(EntryKey* other) const;

 private:
  static constexpr INT_PTR kOpenOther = 100;

  void OnShow() override;
  bool OnCommand(int control, int notification) override;
  LRESULT OnNotify(const NMHDR& header) override;
  bool OnKey(int control, UINT key) override;
  void OnOk() override;
  void OnCancel() override;

  bool IsNew() const { return entry_.version == kAnyVersion; }
  void AddPages();
  void LockAll();
  void Judge();
  UINT Fault() const;
  bool IsChanged() const;
  void Save();
  HRESULT Store();
  // What comes after a change by somebody else: whether there is something to store again.
  bool Resolve();
  bool MakeNew();
  bool IsDuplicate();

  const std::shared_ptr<book::Store> store_;
  Entry entry_;               // as it was read
  formats::Contact contact_;  // as the user has it
  const uint32_t number_;
  EntryKey other_{};
  INT_PTR result_ = kNotShown;
  NamePage names_;
  NumbersPage numbers_;
  EmailsPage emails_;
  AddressPage addresses_;
  NotePage note_;
  ContactPage* const pages_[5];
};

ContactWindow::ContactWindow(const kit::Language& language, const std::shared_ptr<book::Store>& store,
                             const Entry& entry, uint32_t number)
    : Dialog(language, IDD_CONTACT, kContactTopics),
      store_(store),
      entry_(entry),
      contact_(entry.contact),
      number_(number),
      names_(*this, contact_),
      numbers_(*this, contact_),
      emails_(*this, contact_),
      addresses_(*this, contact_),
      note_(*this, contact_),
      pages_{&names_, &numbers_, &emails_, &addresses_, &note_} {}

HRESULT ContactWindow::Run(HWND owner) {
  result_ = Show(owner);
  if (result_ == kNotShown) return MAPI_E_CALL_FAILED;
  return result_ == IDOK ? S_OK : MAPI_E_USER_CANCEL;
}

bool ContactWindow::OpensOther(EntryKey* other) const {
  *other = other_;
  return result_ == kOpenOther;
}

void ContactWindow::OnShow() {
  const std::wstring name[] = {ToWide(contact_.name)};
  SetWindowTextW(Window(), IsNew() ? Texts().Text(IDS_CAPTION_OF_NEW_CONTACT).c_str()
                                   : Texts().Text(IDS_CAPTION_OF_CONTACT, name).c_str());
  AddPages();
  for (ContactPage* each : pages_) {
    each->Prepare();
    each->Fill();
  }
  if (store_->IsReadOnly()) LockAll();
  if (number_ != 0) numbers_.SelectKey(number_);
  FocusOn(number_ != 0 ? IDC_NUMBER : IDC_NAME);
  Judge();
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

// Only the button that closes is left, where the other one stood.
void ContactWindow::LockAll() {
  for (ContactPage* each : pages_) each->Lock();
  ShowWindow(Item(IDOK), SW_HIDE);
  SetText(IDCANCEL, Texts().Text(IDS_CLOSE));
  SendMessageW(Window(), DM_SETDEFID, IDCANCEL, 0);
}

bool ContactWindow::OnCommand(int control, int notification) {
  const auto isIts = [&](ContactPage* each) { return each->OnCommand(control, notification); };
  if (std::none_of(std::begin(pages_), std::end(pages_), isIts)) return false;
  Judge();
  return true;
}

LRESULT ContactWindow::OnNotify(const NMHDR& header) {
  for (ContactPage* each : pages_) each->OnNotify(header);
  Judge();
  return 0;
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

void ContactWindow::Judge() {
  if (store_->IsReadOnly()) return SetText(IDC_STATUS, Texts().Text(IDS_READ_ONLY));
  const UINT fault = Fault();
  const std::wstring text = fault != 0 ? Texts().Text(fault) : std::wstring();
  if (TextOf(IDC_STATUS) != text) SetText(IDC_STATUS, text);
  Enable(IDOK, fault == 0);
}

bool ContactWindow::IsChanged() const {
  const auto hasTyped = [](const ContactPage* each) { return each->HasTyped(); };
  return Tidied(contact_) != Tidied(entry_.contact) ||
         std::any_of(std::begin(pages_), std::end(pages_), hasTyped);
}

void ContactWindow::OnCancel() {
  const bool canLeave = store_->IsReadOnly() || !IsChanged() || Ask(Texts().Text(IDS_ASK_LEAVE));
  if (canLeave) Close(IDCANCEL);
}

void ContactWindow::OnOk() {
  if (store_->IsReadOnly()) return Close(IDCANCEL);
  for (ContactPage* each : pages_) each->TakeTyped();
  if (Fault() != 0) return Judge();
  if (!IsNew() && !IsChanged()) return Close(IDOK);
  Save();
}

void ContactWindow::Save() {
  if (IsNew() && IsDuplicate()) return;
  static_cast<void>(store_->Tend());
  for (;;) {
    const HRESULT hr = Store();
    if (SUCCEEDED(hr)) return Close(IDOK);
    const bool isGone = hr == MAPI_E_OBJECT_DELETED;
    // A collision: what was to be saved as new has come back meanwhile.
    const bool isOther = hr == MAPI_E_OBJECT_CHANGED || (hr == MAPI_E_COLLISION && !contact_.uid.empty());
    if (!isGone && !isOther) return static_cast<void>(Tell(FaultText(Texts(), hr)));
    if (!(isGone ? MakeNew() : Resolve())) return;
  }
}

HRESULT ContactWindow::Store() {
  const formats::Contact contact = Tidied(contact_);
  if (IsNew()) return store_->Add(contact, &entry_.key, nullptr);
  return store_->Change(entry_.key, contact, entry_.version, nullptr);
}

// A box of three: open that one, save this one too, go back.
bool ContactWindow::IsDuplicate() {
  if (FAILED(FindDuplicate(*store_, Tidied(contact_), &other_))) return false;
  const std::wstring name[] = {ToWide(Tidied(contact_).name)};
  const int answer =
      Tell(Texts().Text(IDS_ASK_DUPLICATE, name), MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON1);
  if (answer == IDYES) Close(kOpenOther);
  return answer != IDNO;
}

// It comes back as the entry that it was.
bool ContactWindow::MakeNew() {
  if (!Ask(Texts().Text(IDS_ASK_DELETED))) return false;
  entry_.version = kAnyVersion;
  return true;
}

bool ContactWindow::Resolve() {
  Entry newest;
  const HRESULT hr = store_->Read(entry_.key, &newest);
  if (hr == MAPI_E_NOT_FOUND || hr == MAPI_E_OBJECT_DELETED) return MakeNew();
  if (FAILED(hr)) return Tell(FaultText(Texts(), hr)), false;
  const formats::Contact mine = Tidied(contact_);
  ConflictWindow window(Texts(), entry_.contact, mine, newest.contact);
  if (window.HasDifferences() && window.Show(Window()) != IDOK) return false;
  entry_ = newest;
  contact_ = window.Chosen();
  for (ContactPage* each : pages_) each->Fill();
  Judge();
  return true;
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
  EntryKey other{};
  ContactWindow window(language, store, Entry{}, 0);
  const HRESULT hr = window.Run(owner);
  if (window.OpensOther(&other)) {
    const HRESULT shown = ShowContact(owner, language, store, other, 0);
    return FAILED(shown) ? shown : MAPI_E_USER_CANCEL;
  }
  if (SUCCEEDED(hr)) *made = window.Key();
  return hr;
}

}  // namespace book
