#include "tests/ui/address/address_world.h"

#include <algorithm>

#include "platform/process.h"
#include "props/foreign_values.h"
#include "props/prop_value.h"

namespace orv::test {
namespace {

class NoSettings final : public SettingsStore {
 public:
  HRESULT Load(PropList&) override { return S_OK; }
  HRESULT Save(const PropList&) override { return S_OK; }
};

}  // namespace

void AddressScript::OnDelete(const std::string& key) {
  FakeScript::OnDelete(key);
  if (kept.contains(key)) return;
  for (auto& [container, node] : nodes) std::erase(node.contents, key);
  nodes.erase(key);
}

void AddressScript::Notify() const {
  for (const Registration& advise : advises) advise.sink->OnNotify(1, nullptr);
}

AddressTest::AddressTest() {
  company_.nodes[""] = {MAPI_ABCONT, L"Company", {}, 0, {}, 0};
  company_.nodes["staff"] = {MAPI_ABCONT, L"Staff", {}, AB_RECIPIENTS, {"anna", "bernd", "all", "carla"}, 0};
  company_.nodes["night"] = {MAPI_ABCONT, L"Night shift", {}, AB_RECIPIENTS, {"dora", "emil"}, 1};
  company_.hierarchy = {"staff", "night"};
  const std::pair<const char*, const wchar_t*> users[] = {
      {"anna", L"Anna"}, {"bernd", L"Bernd"}, {"all", L"All of us"}, {"carla", L"Carla"}, {"dora", L"Dora"}};
  for (const auto& [key, shown] : users) company_.nodes[key] = {MAPI_MAILUSER, shown, L"FAX", 0, {}, 0};
  company_.nodes["all"].type = MAPI_DISTLIST;
  personal_.nodes[""] = {MAPI_ABCONT, L"Personal", {}, AB_MODIFIABLE, {}, 0};
  personal_.nodes["friends"] = {MAPI_ABCONT, L"Friends", {}, AB_MODIFIABLE | AB_RECIPIENTS, {"fred"}, 0};
  personal_.hierarchy = {"friends"};
  personal_.nodes["fred"] = {MAPI_MAILUSER, L"Fred", L"FAX", 0, {}, 0};
  // The provider that is loaded last comes first.
  for (AddressScript* script : {&personal_, &company_}) {
    auto record = std::make_unique<ProviderRecord>(Module(), script->uid);
    record->AdoptProvider(MakeFakeProvider(script, {&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer}));
    EXPECT_EQ(record->RegisterUid(script->uid), S_OK);
    providers_->Add(std::move(record));
  }
  EXPECT_EQ(CAddrBook::Create(std::make_unique<NoSettings>(), providers_.Get(), book_.Put()), S_OK);
  std::vector<BYTE> friends = personal_.EntryId("friends");
  EXPECT_EQ(book_->SetPAB(static_cast<ULONG>(friends.size()), reinterpret_cast<ENTRYID*>(friends.data())),
            S_OK);
  log_.lines.clear();
}

AddressTest::~AddressTest() {
  book_->Shutdown();
  book_.Reset();
  providers_->UnloadAll();
  for (const AddressScript* script : {&company_, &personal_}) {
    EXPECT_EQ(script->liveObjects, 0) << script->name;
    EXPECT_TRUE(script->advises.empty()) << script->name;
  }
}

AdrListPtr MakeRecipients(const std::vector<Recipient>& recipients) {
  AdrListPtr list;
  EXPECT_EQ(AllocateRoot(CbNewADRLIST(recipients.size()), reinterpret_cast<void**>(list.Put())), S_OK);
  for (const Recipient& recipient : recipients) {
    const auto idSize = static_cast<ULONG>(recipient.entryId.size());
    std::vector<SPropValue> values = {
        {PR_RECIPIENT_TYPE, 0, {.l = recipient.type}},
        {PR_ENTRYID, 0, {.bin = {idSize, const_cast<BYTE*>(recipient.entryId.data())}}},
        {PR_DISPLAY_NAME_W, 0, {.lpszW = const_cast<WCHAR*>(recipient.name.c_str())}},
        {PR_OBJECT_TYPE, 0, {.ul = recipient.objectType}}};
    std::erase_if(values, [&](const SPropValue& value) { return value.ulPropTag == recipient.without; });
    SRow row{};
    EXPECT_EQ(DuplicateRow(row, {0, static_cast<ULONG>(values.size()), values.data()}), S_OK);
    list->aEntries[list->cEntries++] = {0, row.cValues, row.lpProps};
  }
  return list;
}

// A thread takes sent messages before posted ones, so a posted one with an effect that can be seen must come back.
void AddressPilot::Settle() const {
  constexpr WPARAM kMark = 0x5E77;
  script.Post(Item(kTypeAhead), EM_SETLIMITTEXT, kMark);
  script.WaitUntil([&] { return Send(kTypeAhead, EM_GETLIMITTEXT) == static_cast<LRESULT>(kMark); },
                   "posted messages to be dealt with");
  Send(kTypeAhead, EM_SETLIMITTEXT, 64);
}

void AddressPilot::Select(int list, const Lines& lines) const {
  Send(list, LB_SETSEL, FALSE, -1);
  for (const int line : lines) Send(list, LB_SETSEL, TRUE, line);
}

AddressPilot::Lines AddressPilot::Selected(int list) const {
  Lines selected(static_cast<std::size_t>(Send(list, LB_GETSELCOUNT)));
  Send(list, LB_GETSELITEMS, selected.size(), reinterpret_cast<LPARAM>(selected.data()));
  return selected;
}

AddressPilot::Texts AddressPilot::Containers() const {
  Texts texts;
  for (WPARAM i = 0; i < static_cast<WPARAM>(Send(kContainers, CB_GETCOUNT)); ++i) {
    std::wstring& text =
        texts.emplace_back(static_cast<std::size_t>(Send(kContainers, CB_GETLBTEXTLEN, i)), L'\0');
    Send(kContainers, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()));
  }
  return texts;
}

void AddressPilot::InNewEntry(const std::function<void(const AddressPilot&)>& steps) const {
  PostPress(kNew);
  const HWND question = script.NextDialog();
  steps(AddressPilot(script, question));
  script.WaitClosed(question);
  script.WaitEnabled(dialog);
  Settle();
}

std::wstring AddressPilot::AnswerBox(int answer) const {
  const std::wstring text = script.AnswerBox(answer);
  script.WaitEnabled(dialog);
  return text;
}

void AddressPilot::PressThrough(int control) const {
  script.PostPress(dialog, control);
  for (Settle(); !IsWindowEnabled(dialog); Settle()) {
    const HWND shown = script.NextDialog();
    // A box may have gone with the first.
    for (const int button : {IDYES, IDOK}) PostMessageW(shown, WM_COMMAND, static_cast<WPARAM>(button), 0);
    script.WaitClosed(shown);
  }
}

HRESULT AddressTest::Call(ULONG wells, HWND owner) {
  parameters_.cDestFields = wells;
  parameters_.lpulDestComps = wells == 0 ? nullptr : types_;
  ADRLIST* list = list_.Detach();
  const HRESULT hr = OrvAddress(reinterpret_cast<ULONG_PTR>(owner), book_.Get(), &parameters_, &list);
  list_.Reset(list);
  return hr;
}

HRESULT AddressTest::Show(ULONG wells, const Steps& steps, HWND owner) {
  DialogDriver driver([&](DialogScript& script) { steps(AddressPilot(script, script.NextDialog())); });
  return Call(wells, owner);
}

void AddressTest::ShowAndPress(int button, ULONG wells, const Steps& steps) {
  const auto all = [&](Pilot pilot) {
    steps(pilot);
    pilot.Close(button);
  };
  EXPECT_EQ(Show(wells, all), button == IDOK ? S_OK : MAPI_E_USER_CANCEL);
}

std::vector<std::string> AddressTest::Calls(const std::vector<std::string>& operations) const {
  std::vector<std::string> found;
  for (const std::string& line : log_.lines) {
    const std::string operation = line.substr(line.find('.') + 1);
    if (std::find(operations.begin(), operations.end(), operation) != operations.end()) found.push_back(line);
  }
  return found;
}

AddressTest::Texts AddressTest::Result() const {
  Texts texts;
  for (ULONG i = 0; list_ && i < list_->cEntries; ++i) {
    const ForeignValues entry(list_->aEntries[i]);
    const WCHAR* name = TextOf(entry.Find(PR_DISPLAY_NAME_W));
    texts.push_back((name == nullptr ? L"?" : name) + std::wstring(L"/") +
                    std::to_wstring(NumberOf(entry.Find(PR_RECIPIENT_TYPE))));
  }
  return texts;
}

}  // namespace orv::test
