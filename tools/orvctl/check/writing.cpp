#include "tools/orvctl/check/writing.h"

#include <algorithm>

namespace orvctl::check {
namespace {

bool IsRefusal(HRESULT result) { return result == MAPI_E_NO_SUPPORT || result == MAPI_E_NO_ACCESS; }

SPropValue TextValue(ULONG tag, WideString& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = text.data();
  return value;
}

}  // namespace

Workshop::Workshop(const Stage& stage) : stage_(stage), probe_(stage.probe), tour_(stage) {
  for (size_t i = 0; i < tour_.containers.size() && container_.empty(); ++i) {
    if ((tour_.containerFlags[i] & AB_MODIFIABLE) != 0) container_ = tour_.containers[i].id;
  }
  if (container_.empty()) NotOffered("no container says AB_MODIFIABLE");
}

Workshop::~Workshop() {
  try {
    for (const Bytes& each : made_) Delete(Bytes(each));
  } catch (const Verdict&) {
    // What cannot be deleted is told by the check of deletion.
  }
}

WideString Workshop::FreshName(const char* purpose) {
  return ToWide(std::string("orvctl check ") + purpose + " " + std::to_string(GetCurrentProcessId()) + " " +
                std::to_string(GetTickCount()));
}

// The template may be null, or be the identifier of an entry that the new one takes after.
ComPtr<IMAPIProp> Workshop::Create(const WideString& name) {
  const ComPtr<IABContainer> container =
      RequireOpen(probe_, stage_.book(), container_, MAPI_BEST_ACCESS).container();
  Require(bool{container}, "a container that says AB_MODIFIABLE has no IABContainer");
  ComPtr<IMAPIProp> entry;
  std::vector<Bytes> templates = {{}};
  if (!tour_.entries.empty()) templates.push_back(tour_.entries.front().id);
  HRESULT result = MAPI_E_NO_SUPPORT;
  for (Bytes& each : templates) {
    result = probe_.Call("IABContainer::CreateEntry", [&] {
      return container->CreateEntry(static_cast<ULONG>(each.size()),
                                    each.empty() ? nullptr : reinterpret_cast<LPENTRYID>(each.data()), 0,
                                    entry.Put());
    });
    if (SUCCEEDED(result)) break;
    static_cast<void>(entry.Detach());
  }
  if (IsRefusal(result))
    NotOffered("CreateEntry answered " + Name(result) + ", though the container says AB_MODIFIABLE");
  Require(SUCCEEDED(result) && entry, "CreateEntry answered " + Name(result));
  Fill(entry.Get(), name);
  return entry;
}

// As a client fills one in. A provider may refuse a kind of address, if it says so.
void Workshop::Fill(IMAPIProp* entry, const WideString& name) {
  WideString texts[] = {name, L"FAX", kNumber};
  SPropValue values[] = {TextValue(PR_DISPLAY_NAME_W, texts[0]), TextValue(PR_ADDRTYPE_W, texts[1]),
                         TextValue(PR_EMAIL_ADDRESS_W, texts[2])};
  Buffer<SPropProblemArray> problems(Ledger::FreeRoot);
  const HRESULT result =
      probe_.Call("IMAPIProp::SetProps", [&] { return entry->SetProps(3, values, problems.Put()); });
  if (FAILED(result)) static_cast<void>(problems.Detach());
  Require(SUCCEEDED(result), "SetProps of a new entry answered " + Name(result));
  for (ULONG i = 0; problems && i < problems->cProblem; ++i) {
    Require(problems->aProblem[i].ulIndex != 0, "SetProps of a new entry refuses PR_DISPLAY_NAME");
    keepsNumber_ = keepsNumber_ && problems->aProblem[i].ulIndex != 2;
  }
}

Bytes Workshop::CreateSaved(const WideString& name) {
  const ComPtr<IMAPIProp> entry = Create(name);
  const HRESULT saved = Save(probe_, entry.Get());
  Require(SUCCEEDED(saved), "SaveChanges of a new entry answered " + Name(saved));
  Bytes id = BytesOf(RequireProps(probe_, entry.Get(), {PR_ENTRYID}).view().Binary(PR_ENTRYID));
  if (id.empty()) id = Find(name);
  Require(!id.empty(), "a new entry that was saved has no PR_ENTRYID");
  made_.push_back(id);
  return id;
}

HRESULT Workshop::DeleteIn(const Bytes& container, const Bytes& id) {
  const ComPtr<IABContainer> object =
      RequireOpen(probe_, stage_.book(), container, MAPI_BEST_ACCESS).container();
  if (!object) return MAPI_E_NO_SUPPORT;
  Bytes copy = id;
  SBinary binary{static_cast<ULONG>(copy.size()), copy.data()};
  ENTRYLIST list{1, &binary};
  return probe_.Call("IABContainer::DeleteEntries", [&] { return object->DeleteEntries(&list, 0); });
}

HRESULT Workshop::Delete(const Bytes& id) {
  std::erase(made_, id);
  const HRESULT result = DeleteIn(tour_.root, id);
  return IsRefusal(result) ? DeleteIn(container_, id) : result;
}

void Workshop::Keep(const Bytes& id) { std::erase(made_, id); }

ComPtr<IMAPITable> Workshop::Contents() {
  ComPtr<IMAPITable> table = ContentsOf(probe_, RequireOpen(probe_, stage_.book(), container_).object);
  Require(bool{table}, "a container that takes entries has no contents table");
  return table;
}

ULONG Workshop::Rows() { return RowCount(probe_, Contents().Get()); }

Bytes Workshop::Find(const WideString& name) {
  const ComPtr<IMAPITable> table = Contents();
  SetColumns(probe_, table.Get(), kEntryColumns);
  constexpr LONG kBlock = 200;
  for (;;) {
    const RowSet rows = QueryRows(probe_, table.Get(), kBlock);
    if (rows->cRows == 0) return {};
    for (ULONG i = 0; i < rows->cRows; ++i) {
      const ValueView row(rows->aRow[i]);
      const LPCWSTR text = row.Text(PR_DISPLAY_NAME_W);
      if (text != nullptr && name == text) return BytesOf(row.Binary(PR_ENTRYID));
    }
  }
}

void SetText(Probe& probe, IMAPIProp* object, ULONG tag, const WideString& text) {
  WideString copy = text;
  SPropValue value = TextValue(tag, copy);
  probe.Succeed("IMAPIProp::SetProps", [&] { return object->SetProps(1, &value, nullptr); });
}

WideString TextOf(Probe& probe, IMAPIProp* object, ULONG tag) {
  const Answer answer = RequireProps(probe, object, {tag});
  const LPCWSTR text = answer.view().Text(tag);
  return text != nullptr ? text : L"";
}

HRESULT Save(Probe& probe, IMAPIProp* object) {
  return probe.Call("IMAPIProp::SaveChanges", [&] { return object->SaveChanges(KEEP_OPEN_READWRITE); });
}

}  // namespace orvctl::check
