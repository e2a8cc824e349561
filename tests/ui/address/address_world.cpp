// The world of the Address dialog's tests; see address_world.h.
#include "tests/ui/address/address_world.h"

#include <algorithm>
#include <cstring>

#include "props/prop_value.h"

namespace orv::test {
namespace {

class NoSettings final : public SettingsStore {
 public:
  HRESULT Load(PropList&) override { return S_OK; }
  HRESULT Save(const PropList&) override { return S_OK; }
};

FakeNode User(const wchar_t* name, ULONG type = MAPI_MAILUSER) {
  FakeNode node;
  node.type = type;
  node.name = name;
  node.addressType = L"FAX";
  return node;
}

FakeNode Container(const wchar_t* name, ULONG flags, ULONG depth, std::vector<std::string> contents = {}) {
  FakeNode node = User(name, MAPI_ABCONT);
  node.containerFlags = flags;
  node.depth = depth;
  node.contents = std::move(contents);
  return node;
}

// The strings that message boxes of the dialog show.
constexpr UINT kTexts[] = {271, 272, 273, 274, 283, 284};

}  // namespace

FakeAnswer AddressScript::OnCall(const char* operation) {
  if (const auto found = during.find(operation); found != during.end()) found->second();
  return FakeScript::OnCall(operation);
}

void AddressScript::OnDelete(const std::string& key) {
  FakeScript::OnDelete(key);
  for (auto& [container, node] : nodes) std::erase(node.contents, key);
  nodes.erase(key);
}

void AddressScript::Notify() const {
  for (const Registration& advise : advises) advise.sink->OnNotify(1, nullptr);
}

AddressWorld::AddressWorld() : providers(CABServiceList::Create()) {
  company.nodes[""] = Container(L"Company", 0, 0);
  company.nodes["staff"] = Container(L"Staff", AB_RECIPIENTS, 0, {"anna", "bernd", "all", "carla"});
  company.nodes["night"] = Container(L"Night shift", AB_RECIPIENTS, 1, {"dora", "emil"});
  company.hierarchy = {"staff", "night"};
  company.nodes["anna"] = User(L"Anna");
  company.nodes["bernd"] = User(L"Bernd");
  company.nodes["all"] = User(L"All of us", MAPI_DISTLIST);
  company.nodes["carla"] = User(L"Carla");
  company.nodes["dora"] = User(L"Dora");
  personal.nodes[""] = Container(L"Personal", AB_MODIFIABLE, 0);
  personal.nodes["friends"] = Container(L"Friends", AB_MODIFIABLE | AB_RECIPIENTS, 0, {"fred"});
  personal.hierarchy = {"friends"};
  personal.nodes["fred"] = User(L"Fred");
  // The provider that is loaded last comes first.
  Add(personal);
  Add(company);
  EXPECT_EQ(S_OK, CAddrBook::Create(std::make_unique<NoSettings>(), providers.Get(), book.Put()));
  std::vector<BYTE> friends = personal.EntryId("friends");
  EXPECT_EQ(S_OK,
            book->SetPAB(static_cast<ULONG>(friends.size()), reinterpret_cast<ENTRYID*>(friends.data())));
  log.lines.clear();
}

AddressWorld::~AddressWorld() {
  book->Shutdown();
  book.Reset();
  providers->UnloadAll();
  for (const AddressScript* script : {&company, &personal}) {
    EXPECT_EQ(script->liveObjects, 0) << script->name;
    EXPECT_TRUE(script->advises.empty()) << script->name;
  }
}

void AddressWorld::Add(AddressScript& script) {
  auto record = std::make_unique<ProviderRecord>(Module(), script.uid);
  record->AdoptProvider(MakeFakeProvider(&script, {&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer}));
  EXPECT_EQ(S_OK, record->RegisterUid(script.uid));
  providers->Add(std::move(record));
}

AdrListPtr MakeRecipients(const std::vector<Recipient>& recipients) {
  AdrListPtr list;
  EXPECT_EQ(S_OK, AllocateRoot(CbNewADRLIST(recipients.size()), reinterpret_cast<void**>(list.Put())));
  for (const Recipient& recipient : recipients) {
    MapiBuffer<SPropValue> values;
    BYTE* id = nullptr;
    WCHAR* name = nullptr;
    const std::size_t nameBytes = (recipient.name.size() + 1) * sizeof(WCHAR);
    EXPECT_EQ(S_OK, values.AllocateArray(4));
    EXPECT_EQ(S_OK, values.More(recipient.entryId.size(), &id));
    EXPECT_EQ(S_OK, values.More(nameBytes, &name));
    std::memcpy(id, recipient.entryId.data(), recipient.entryId.size());
    std::memcpy(name, recipient.name.c_str(), nameBytes);
    ULONG count = 0;
    const auto add = [&](ULONG tag) -> SPropValue& {
      values[count].ulPropTag = tag;
      return tag == recipient.without ? values[count] : values[count++];
    };
    add(PR_RECIPIENT_TYPE).Value.l = recipient.type;
    add(PR_ENTRYID).Value.bin = {static_cast<ULONG>(recipient.entryId.size()), id};
    add(PR_DISPLAY_NAME_W).Value.lpszW = name;
    add(PR_OBJECT_TYPE).Value.ul = recipient.objectType;
    list->aEntries[list->cEntries++] = {0, count, values.Detach()};
  }
  return list;
}

HRESULT AddressTest::Show(ULONG wells, const Steps& steps) {
  parameters_.cDestFields = wells;
  parameters_.lpulDestComps = wells == 0 ? nullptr : types_;
  DialogDriver driver([&](DialogScript& script) { steps(script, script.NextDialog()); });
  ADRLIST* list = list_.Detach();
  const HRESULT hr = OrvAddress(0, world_.book.Get(), &parameters_, &list);
  list_.Reset(list);
  driver.Finish();
  return hr;
}

void AddressTest::ShowAndCancel(ULONG wells, const Steps& steps) {
  EXPECT_EQ(MAPI_E_USER_CANCEL, Show(wells, [&](DialogScript& script, HWND dialog) {
              steps(script, dialog);
              script.WaitEnabled(dialog);
              script.Close(dialog, IDCANCEL);
            }));
}

void AddressTest::SelectLines(DialogScript& script, HWND dialog, int list, const std::vector<int>& lines) {
  const HWND box = GetDlgItem(dialog, list);
  script.Send(box, LB_SETSEL, FALSE, -1);
  for (const int line : lines) script.Send(box, LB_SETSEL, TRUE, line);
}

std::vector<int> AddressTest::SelectedLines(DialogScript& script, HWND dialog, int list) {
  const HWND box = GetDlgItem(dialog, list);
  std::vector<int> selected(static_cast<std::size_t>(script.Send(box, LB_GETSELCOUNT)));
  script.Send(box, LB_GETSELITEMS, selected.size(), reinterpret_cast<LPARAM>(selected.data()));
  return selected;
}

AddressTest::Texts AddressTest::ContainerTexts(DialogScript& script, HWND dialog) {
  const HWND box = GetDlgItem(dialog, kContainers);
  Texts texts;
  for (WPARAM i = 0; i < static_cast<WPARAM>(script.Send(box, CB_GETCOUNT)); ++i) {
    std::wstring text(static_cast<std::size_t>(script.Send(box, CB_GETLBTEXTLEN, i)), L'\0');
    script.Send(box, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()));
    texts.push_back(text);
  }
  return texts;
}

int AddressTest::ContainerSelected(DialogScript& script, HWND dialog, int dropDown) {
  return static_cast<int>(script.Send(GetDlgItem(dialog, dropDown), CB_GETCURSEL));
}

void AddressTest::ChooseContainer(DialogScript& script, HWND dialog, int line) {
  const HWND box = GetDlgItem(dialog, kContainers);
  script.Send(box, CB_SETCURSEL, static_cast<WPARAM>(line));
  script.Post(dialog, WM_COMMAND, MAKEWPARAM(kContainers, CBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
}

AddressTest::Texts AddressTest::EntriesAfterNotice(DialogScript& script, HWND dialog,
                                                   const AddressScript& provider) {
  provider.Notify();
  Settle(script, dialog);
  return script.Items(dialog, kEntries);
}

AddressTest::Texts AddressTest::EntriesOfContainer(DialogScript& script, HWND dialog, int line) {
  ChooseContainer(script, dialog, line);
  Settle(script, dialog);
  return script.Items(dialog, kEntries);
}

void AddressTest::Type(DialogScript& script, HWND dialog, const wchar_t* text) {
  script.Send(GetDlgItem(dialog, kTypeAhead), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
}

// A thread takes sent messages before posted ones, so a posted one with an effect that can be seen must come back.
void AddressTest::Settle(DialogScript& script, HWND dialog) {
  constexpr WPARAM kMark = 0x5E77;
  const HWND title = GetDlgItem(dialog, kTypeAhead);
  script.Post(title, EM_SETLIMITTEXT, kMark);
  script.WaitUntil([&] { return script.Send(title, EM_GETLIMITTEXT) == static_cast<LRESULT>(kMark); },
                   "posted messages to be dealt with");
  script.Send(title, EM_SETLIMITTEXT, 64);
}

UINT AddressTest::BoxAfter(DialogScript& script, HWND dialog, int control, int answer) {
  script.PostPress(dialog, control);
  return AnswerBox(script, dialog, answer);
}

UINT AddressTest::AnswerBox(DialogScript& script, HWND dialog, int answer) {
  const std::wstring text = script.AnswerBox(answer);
  script.WaitEnabled(dialog);
  const auto number = std::find_if(std::begin(kTexts), std::end(kTexts), [&](UINT candidate) {
    return ui::LoadText(Resources(), candidate, 160) == text;
  });
  return number == std::end(kTexts) ? 0 : *number;
}

std::vector<std::string> AddressTest::Calls(const std::vector<std::string>& operations) const {
  std::vector<std::string> found;
  for (const std::string& line : world_.log.lines) {
    const std::string operation = line.substr(line.find('.') + 1);
    if (std::find(operations.begin(), operations.end(), operation) != operations.end()) found.push_back(line);
  }
  return found;
}

AddressTest::Texts AddressTest::Result() const {
  Texts texts;
  for (ULONG i = 0; list_ && i < list_->cEntries; ++i) {
    const ADRENTRY& entry = list_->aEntries[i];
    const SPropValue* name = FindValue(entry.rgPropVals, entry.cValues, PR_DISPLAY_NAME_W);
    const SPropValue* type = FindValue(entry.rgPropVals, entry.cValues, PR_RECIPIENT_TYPE);
    texts.push_back((name == nullptr ? L"?" : name->Value.lpszW) + std::wstring(L"/") +
                    (type == nullptr ? L"?" : std::to_wstring(type->Value.l)));
  }
  return texts;
}

}  // namespace orv::test
