#include "tools/orvctl/check/writing.h"

#include <algorithm>

namespace orvctl::check {

Workshop::Workshop(const Stage& stage) : stage_(stage), probe_(stage.probe), tour_(stage) {
  for (size_t i = 0; i < tour_.containers.size() && container_.empty(); ++i) {
    if ((tour_.containerFlags[i] & AB_MODIFIABLE) != 0) container_ = tour_.containers[i].id;
  }
  if (container_.empty()) NotOffered("no container says AB_MODIFIABLE");
  tour_.RequireColumn(PR_DISPLAY_NAME_W);
}

Workshop::~Workshop() {
  try {
    while (!made_.empty()) Delete(Bytes(made_.back()));
  } catch (const Verdict&) {
    // What cannot be deleted is told by the check of deletion.
  }
}

WideString Workshop::FreshName(const char* purpose) {
  return ToWide(std::string("orvctl check ") + purpose + " " + std::to_string(GetCurrentProcessId()) + " " +
                std::to_string(GetTickCount()));
}

HRESULT Workshop::CreateFrom(Bytes templateId, ULONG flags, ComPtr<IMAPIProp>& entry) {
  const ComPtr<IABContainer> container =
      RequireOpen(probe_, stage_.book(), container_, MAPI_BEST_ACCESS).container();
  Require(bool{container}, "a container that says AB_MODIFIABLE has no IABContainer");
  auto* const id = templateId.empty() ? nullptr : reinterpret_cast<LPENTRYID>(templateId.data());
  const HRESULT result = probe_.Call("IABContainer::CreateEntry", [&] {
    return container->CreateEntry(static_cast<ULONG>(templateId.size()), id, flags, entry.Put());
  });
  if (FAILED(result)) static_cast<void>(entry.Detach());
  Require(FAILED(result) || entry, "CreateEntry succeeded and handed out null");
  return result;
}

// The template may be null, or be the identifier of an entry that the new one takes after.
ComPtr<IMAPIProp> Workshop::Create(const WideString& name, ULONG flags) {
  ComPtr<IMAPIProp> entry;
  HRESULT result = CreateFrom({}, flags, entry);
  if (FAILED(result) && !tour_.entries.empty()) result = CreateFrom(tour_.entries.front().id, flags, entry);
  if (IsRefusal(result))
    NotOffered("CreateEntry answered " + Name(result) + ", though the container says AB_MODIFIABLE");
  Require(SUCCEEDED(result), "CreateEntry answered " + Name(result));
  Fill(entry.Get(), name);
  return entry;
}

Bytes Workshop::CreateList(const WideString& name) {
  const Opened opened = RequireOpen(probe_, stage_.book(), container_);
  const Answer answer = RequireProps(probe_, opened.props().Get(), {PR_DEF_CREATE_DL});
  const Bytes templateId = BytesOf(answer.view().Binary(PR_DEF_CREATE_DL));
  if (templateId.empty()) NotOffered("the container has no PR_DEF_CREATE_DL");
  ComPtr<IMAPIProp> list;
  const HRESULT result = CreateFrom(templateId, 0, list);
  Require(SUCCEEDED(result), "CreateEntry after the container's PR_DEF_CREATE_DL answered " + Name(result));
  SetText(probe_, list.Get(), PR_DISPLAY_NAME_W, name);
  const HRESULT saved = SaveNew(list, name);
  Require(SUCCEEDED(saved), "SaveChanges of a new list answered " + Name(saved));
  return made_.back();
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

HRESULT Workshop::SaveNew(const ComPtr<IMAPIProp>& entry, const WideString& name) {
  const HRESULT saved = Save(probe_, entry.Get());
  if (FAILED(saved)) return saved;
  Bytes id = BytesOf(RequireProps(probe_, entry.Get(), {PR_ENTRYID}).view().Binary(PR_ENTRYID));
  if (id.empty()) id = Find(name);
  Require(!id.empty(), "a new entry that was saved has no PR_ENTRYID");
  TakeAway(id);
  return saved;
}

Bytes Workshop::CreateSaved(const WideString& name, ULONG flags) {
  const HRESULT saved = SaveNew(Create(name, flags), name);
  Require(SUCCEEDED(saved), "SaveChanges of a new entry answered " + Name(saved));
  return made_.back();
}

HRESULT Workshop::Copy(const Bytes& id) {
  const ComPtr<IABContainer> container =
      RequireOpen(probe_, stage_.book(), container_, MAPI_BEST_ACCESS).container();
  return WithEntryList(id, [&](ENTRYLIST* list) {
    return probe_.Call("IABContainer::CopyEntries",
                       [&] { return container->CopyEntries(list, 0, nullptr, 0); });
  });
}

HRESULT Workshop::DeleteIn(const Bytes& container, const Bytes& id) {
  const ComPtr<IABContainer> object =
      RequireOpen(probe_, stage_.book(), container, MAPI_BEST_ACCESS).container();
  if (!object) return MAPI_E_NO_SUPPORT;
  return WithEntryList(id, [&](ENTRYLIST* list) {
    return probe_.Call("IABContainer::DeleteEntries", [&] { return object->DeleteEntries(list, 0); });
  });
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

void Workshop::RequireStored(const Bytes& id, const WideString& name) {
  const Opened opened = RequireOpen(probe_, stage_.book(), id);
  const WideString stored = TextOf(probe_, opened.props().Get(), PR_DISPLAY_NAME_W);
  Require(stored == name, "saved as '" + ToUtf8(name) + "', it says '" + ToUtf8(stored) + "'");
  const WideString number = TextOf(probe_, opened.props().Get(), PR_EMAIL_ADDRESS_W);
  Require(number == kNumber || !keepsNumber_,
          "saved with PR_EMAIL_ADDRESS '" + ToUtf8(kNumber) + "', it says '" + ToUtf8(number) + "'");
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
