#include "providers/book/windows/entry_window.h"

#include "providers/book/text.h"
#include "providers/book/windows/conflict_window.h"
#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"
#include "providers/book/windows/wait_window.h"

namespace book {
namespace {

// Another program that takes longer is waited for in a window.
constexpr ULONGLONG kUnnoticed = 300;  // milliseconds

}  // namespace

EntryWindow::EntryWindow(const kit::Language& language, WORD dialogTemplate,
                         std::span<const kit::HelpTopic> topics, const std::shared_ptr<Store>& store,
                         const Entry& entry)
    : Dialog(language, dialogTemplate, topics),
      store_(std::make_shared<Store>(*store, kUnnoticed)),
      entry_(entry),
      contact_(entry.contact) {}

HRESULT EntryWindow::Run(HWND owner) {
  result_ = Show(owner);
  if (result_ == kNotShown) return MAPI_E_CALL_FAILED;
  return result_ == IDOK ? S_OK : MAPI_E_USER_CANCEL;
}

HRESULT EntryWindow::RunNew(HWND owner, const std::function<HRESULT(const EntryKey&)>& showOther,
                            EntryKey* made) {
  const HRESULT hr = Run(owner);
  if (SUCCEEDED(hr)) *made = entry_.key;
  if (result_ != kOpenOther) return hr;
  const HRESULT shown = showOther(other_);
  return FAILED(shown) ? shown : MAPI_E_USER_CANCEL;
}

void EntryWindow::ShowCaption(UINT ofKnown, UINT ofNew) {
  const std::wstring name[] = {ToWide(contact_.name)};
  SetWindowTextW(Window(), (IsNew() ? Texts().Text(ofNew) : Texts().Text(ofKnown, name)).c_str());
}

void EntryWindow::LockButtons() {
  ShowWindow(Item(IDOK), SW_HIDE);
  SetText(IDCANCEL, Texts().Text(IDS_CLOSE));
  SendMessageW(Window(), DM_SETDEFID, IDCANCEL, 0);
}

void EntryWindow::Judge() {
  const UINT fault = IsReadOnly() ? IDS_READ_ONLY : Fault();
  const UINT told = Hint() != 0 ? Hint() : fault;
  const std::wstring text = told != 0 ? Texts().Text(told) : std::wstring();
  if (TextOf(IDC_STATUS) != text) SetText(IDC_STATUS, text);
  Enable(IDOK, fault == 0);
}

bool EntryWindow::IsChanged() const { return HasTyped() || Tidied(contact_) != Tidied(entry_.contact); }

void EntryWindow::OnCancel() {
  const bool canLeave = IsReadOnly() || !IsChanged() || Ask(Texts().Text(IDS_ASK_LEAVE));
  if (canLeave) Close(IDCANCEL);
}

void EntryWindow::OnOk() {
  if (IsReadOnly()) return Close(IDCANCEL);
  TakeTyped();
  if (Fault() != 0) return Judge();
  if (!IsNew() && !IsChanged()) return Close(IDOK);
  Save();
}

void EntryWindow::Save() {
  if (IsNew() && !MayBeAdded()) return;
  for (;;) {
    const HRESULT hr = WaitWhileBusy(Window(), Texts(), [this] { return Put(); });
    if (SUCCEEDED(hr)) return Close(IDOK);
    if (hr == MAPI_E_USER_CANCEL) return;
    const bool isGone = hr == MAPI_E_OBJECT_DELETED;
    // A collision: what was to be saved as new has come back meanwhile.
    const bool isOther = hr == MAPI_E_OBJECT_CHANGED || (hr == MAPI_E_COLLISION && !contact_.uid.empty());
    if (!isGone && !isOther) return static_cast<void>(Tell(FaultText(Texts(), hr)));
    if (!(isGone ? MakeNew() : Resolve())) return;
  }
}

// A box of three: open that one, save this one too, go back.
bool EntryWindow::MayBeAdded() {
  const bool isKnown = !contact_.uid.empty();
  const formats::Contact contact = Tidied(contact_);
  if (isKnown || FAILED(FindDuplicate(*store_, contact, &other_))) return true;
  const std::wstring name[] = {ToWide(contact.name)};
  const UINT question = contact.isList ? IDS_ASK_DUPLICATE_LIST : IDS_ASK_DUPLICATE;
  const int answer = Tell(Texts().Text(question, name), MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON1);
  if (answer == IDYES) Close(kOpenOther);
  return answer == IDNO;
}

// The copy of the day is made before the day's first change.
HRESULT EntryWindow::Put() {
  const Waiting waiting;
  if (store_->Tend() == MAPI_E_BUSY) return MAPI_E_BUSY;
  const formats::Contact contact = Tidied(contact_);
  if (IsNew()) return store_->Add(contact, &entry_.key, nullptr);
  return store_->Change(entry_.key, contact, entry_.version, nullptr);
}

// It comes back as the entry that it was.
bool EntryWindow::MakeNew() {
  if (!Ask(Texts().Text(IDS_ASK_DELETED))) return false;
  entry_.version = kAnyVersion;
  return true;
}

bool EntryWindow::Resolve() {
  Entry newest;
  const HRESULT hr = store_->Read(entry_.key, &newest);
  if (hr == MAPI_E_NOT_FOUND || hr == MAPI_E_OBJECT_DELETED) return MakeNew();
  if (FAILED(hr)) return Tell(FaultText(Texts(), hr)), false;
  const formats::Contact mine = Tidied(contact_);
  ConflictWindow window(Texts(), entry_.contact, mine, newest.contact);
  if (window.HasDifferences() && window.Show(Window()) != IDOK) return false;
  contact_ = window.Chosen();
  entry_ = newest;
  Refill();
  Judge();
  return true;
}

}  // namespace book
