// Containers that take more than a new entry: lists and their members, twins, copies of others' entries.
#include <algorithm>
#include <set>

#include "tools/orvctl/check/writing.h"

namespace orvctl::check {
namespace {

using Ids = std::multiset<Bytes>;

// A list that was made for the check, as a client sees it.
class MadeList {
 public:
  MadeList(const Stage& stage, Workshop& workshop)
      : stage_(stage), probe_(stage.probe), id_(workshop.CreateList(Workshop::FreshName("list"))) {
    const Opened opened = RequireOpen(probe_, stage.book(), id_, MAPI_BEST_ACCESS);
    Require(opened.type == MAPI_DISTLIST,
            "a new list opens as an object of type " + std::to_string(opened.type));
    list_ = opened.object.As<IDistList>(IID_IDistList);
    Require(bool{list_}, "a new list has no IDistList");
  }

  // Of a fresh table of the list opened anew.
  Ids Members() const {
    const ComPtr<IMAPITable> table = ContentsOf(probe_, RequireOpen(probe_, stage_.book(), id_).object);
    Require(bool{table}, "a list that takes members has no contents table");
    SetColumns(probe_, table.Get(), kEntryColumns);
    constexpr LONG kEnough = 100;
    const RowSet rows = QueryRows(probe_, table.Get(), kEnough);
    Ids ids;
    for (ULONG i = 0; i < rows->cRows; ++i) ids.insert(BytesOf(ValueView(rows->aRow[i]).Binary(PR_ENTRYID)));
    return ids;
  }
  void RequireMembers(const Ids& wanted, const std::string& when) const {
    const Ids there = Members();
    Require(there.size() == wanted.size(), when + " the list has " + Count(there.size(), "member") +
                                               ", not " + std::to_string(wanted.size()));
    Require(there == wanted, when + " the list names others than its members");
  }

  // With the entry as template, which becomes a member when what comes of it is saved.
  HRESULT Create(Bytes entry) const {
    ComPtr<IMAPIProp> member;
    const HRESULT result = probe_.Call("IDistList::CreateEntry", [&] {
      return list_->CreateEntry(static_cast<ULONG>(entry.size()), reinterpret_cast<LPENTRYID>(entry.data()),
                                0, member.Put());
    });
    if (FAILED(result)) return static_cast<void>(member.Detach()), result;
    Require(bool{member}, "CreateEntry of a list succeeded and handed out null");
    return Save(probe_, member.Get());
  }
  HRESULT Copy(const Bytes& entry) const {
    return WithEntryList(entry, [&](ENTRYLIST* list) {
      return probe_.Call("IDistList::CopyEntries", [&] { return list_->CopyEntries(list, 0, nullptr, 0); });
    });
  }
  HRESULT TakeOut(const Bytes& entry) const {
    return WithEntryList(entry, [&](ENTRYLIST* list) {
      return probe_.Call("IDistList::DeleteEntries", [&] { return list_->DeleteEntries(list, 0); });
    });
  }

 private:
  const Stage& stage_;
  Probe& probe_;
  const Bytes id_;
  ComPtr<IDistList> list_;
};

Verdict CheckList(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const MadeList list(stage, workshop);
  list.RequireMembers({}, "when it was made");
  const Bytes one = workshop.CreateSaved(Workshop::FreshName("one")),
              other = workshop.CreateSaved(Workshop::FreshName("other"));
  const ULONG rows = workshop.Rows();
  const HRESULT created = list.Create(one);
  if (IsRefusal(created)) NotOffered("lists take no members: CreateEntry answered " + Name(created));
  Require(SUCCEEDED(created), "CreateEntry of a list, saved, answered " + Name(created));
  list.RequireMembers({one}, "after an entry was made a member");
  const HRESULT copied = list.Copy(other);
  Require(SUCCEEDED(copied) || IsRefusal(copied), "CopyEntries of a list answered " + Name(copied));
  const Ids rest = SUCCEEDED(copied) ? Ids{other} : Ids{};
  if (SUCCEEDED(copied)) list.RequireMembers({one, other}, "after CopyEntries of another");
  Require(workshop.Rows() == rows, "an entry that was made a member is one more row of the container");
  const HRESULT taken = list.TakeOut(one);
  Require(SUCCEEDED(taken), "DeleteEntries of a member answered " + Name(taken));
  list.RequireMembers(rest, "after a member was taken out");
  const HRESULT opened = Open(probe, stage.book(), one).result;
  Require(SUCCEEDED(opened), "taken out of the list the entry is gone: OpenEntry answered " + Name(opened));
  return Ok("made, members added, listed, taken out");
}

// What a twin is the provider decides; what it says then has to be true.
Verdict CheckTwins(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const WideString name = Workshop::FreshName("twin");
  workshop.CreateSaved(name, CREATE_CHECK_DUP_STRICT);
  const ULONG rows = workshop.Rows();
  const HRESULT saved = workshop.SaveNew(workshop.Create(name, CREATE_CHECK_DUP_STRICT), name);
  if (SUCCEEDED(saved))
    return Advice("an entry of the same name and number is no twin; MAPI_E_COLLISION would keep it out");
  Require(saved == MAPI_E_COLLISION,
          "SaveChanges of a twin answered " + Name(saved) + ", not MAPI_E_COLLISION");
  Require(workshop.Rows() == rows, "a twin that was refused is one more row");
  return Ok("a twin is refused, others are not");
}

// An identifier that no provider here has registered.
kit::PropList ForeignEntry(const WideString& name) {
  constexpr BYTE kForeign[ORV_MIN_ENTRYID + 4] = {0,    0,    0,    0,    0xF0, 0x5E, 0x16, 0x4E,
                                                  0xB0, 0x0C, 0x4A, 0x91, 0x8D, 0x02, 0x77, 0x31,
                                                  0xAC, 0x60, 0x5D, 0x13, 1,    2,    3,    4};
  kit::PropList values;
  values.SetBytes(PR_ENTRYID, kForeign, sizeof(kForeign));
  values.Set(PR_OBJECT_TYPE, MAPI_MAILUSER);
  values.Set(PR_DISPLAY_NAME_W, name);
  values.Set(PR_ADDRTYPE_W, L"FAX");
  values.Set(PR_EMAIL_ADDRESS_W, kNumber);
  return values;
}

Verdict CheckCopy(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  workshop.CreateSaved(Workshop::FreshName("beside"));  // tells whether numbers are kept
  const WideString name = Workshop::FreshName("copied");
  kit::PropList& foreign = stage.session->support.foreignEntry;
  foreign = ForeignEntry(name);
  const Bytes source = BytesOf(foreign.Bytes(PR_ENTRYID));
  const HRESULT copied = workshop.Copy(source);
  if (IsRefusal(copied)) NotOffered("CopyEntries answered " + Name(copied));
  Require(SUCCEEDED(copied), "CopyEntries of another provider's entry answered " + Name(copied));
  const Bytes id = workshop.Find(name);
  Require(!id.empty(), "CopyEntries answered " + Name(copied) + ", and no entry of that name is listed");
  Require(id != source, "the copy bears the identifier of the entry that was copied");
  workshop.TakeAway(id);
  workshop.RequireStored(id, name);
  return Ok("copied, listed, opened");
}

constexpr NamedCheck kListsChecks[] = {
    {"write.list", CheckList}, {"write.twins", CheckTwins}, {"write.copy", CheckCopy}};

}  // namespace

std::span<const NamedCheck> ListChecks() { return kListsChecks; }

}  // namespace orvctl::check
