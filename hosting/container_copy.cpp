// The walk over a container's tables. A stack of our own instead of recursion: the depth is the caller's
// data.
#include "hosting/container_copy.h"

#include <utility>
#include <vector>

#include "hosting/object_copy.h"
#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvguids.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "props/table_reader.h"

namespace orv {
namespace {

constexpr LONG kRowsAtOnce = 50;

enum Column : ULONG { kEntryId, kObjectType };
constexpr TagArray kColumns{PR_ENTRYID, PR_OBJECT_TYPE};

// A container or a list that entries are created in: two interfaces with one method in common.
class Target {
 public:
  static HRESULT Of(IUnknown& object, Target& target) {
    if (SUCCEEDED(Query(object, IID_IABContainer, target.container_))) return S_OK;
    return Query(object, IID_IDistList, target.list_);
  }
  HRESULT CreateEntry(const EntryId& templateId, ComPtr<IMAPIProp>& entry) const {
    const HRESULT hr = HandedOut(entry, [&] {
      return container_ ? container_->CreateEntry(templateId.Size(), templateId.Get(), 0, entry.Put())
                        : list_->CreateEntry(templateId.Size(), templateId.Get(), 0, entry.Put());
    });
    return FAILED(hr) || entry ? hr : MAPI_E_CALL_FAILED;
  }

 private:
  ComPtr<IABContainer> container_;
  ComPtr<IDistList> list_;
};

// One container being copied: its entries first, then the containers below it.
struct Level {
  ComPtr<IMAPIContainer> source;
  Target target;
  bool contents = false;   // still to be read
  bool hierarchy = false;  // still to be read
  TableReader rows = {};
  bool reading = false;
};

class ContainerWalk {
 public:
  ContainerWalk(const ContainerCopy& what, VisitedEntries& visited) : what_(what), visited_(visited) {}

  HRESULT Run(IUnknown& source, IUnknown& destination) {
    HRESULT hr = Descend(source, destination, what_.contents, what_.hierarchy);
    while (SUCCEEDED(hr) && !levels_.empty()) hr = Step();
    return hr;
  }

 private:
  HRESULT Descend(IUnknown& source, IUnknown& destination, bool contents, bool hierarchy) {
    Level level;
    level.contents = contents;
    level.hierarchy = hierarchy;
    if (const HRESULT hr = Query(source, IID_IMAPIContainer, level.source); FAILED(hr)) return hr;
    if (const HRESULT hr = Target::Of(destination, level.target); FAILED(hr)) return hr;
    levels_.push_back(std::move(level));
    return S_OK;
  }

  HRESULT Step() {
    Level& level = levels_.back();
    if (!level.reading) return OpenNextTable(level);
    const HRESULT hr = level.rows.Next();
    if (FAILED(hr)) return hr;
    level.reading = hr == S_OK;
    return level.reading ? CopyRow(level.rows.Row()) : S_OK;
  }

  HRESULT OpenNextTable(Level& level) {
    if (!level.contents && !level.hierarchy) {
      levels_.pop_back();
      return S_OK;
    }
    ComPtr<IMAPITable> table;
    const HRESULT hr = HandedOut(table, [&] {
      return level.contents ? level.source->GetContentsTable(MAPI_UNICODE, table.Put())
                            : level.source->GetHierarchyTable(MAPI_UNICODE, table.Put());
    });
    if (FAILED(hr)) return hr;
    (level.contents ? level.contents : level.hierarchy) = false;
    level.reading = true;
    return level.rows.Open(std::move(table), kColumns, kRowsAtOnce, TableReader::Start::kWhereItStands);
  }

  HRESULT CopyRow(const ForeignValues& row) {
    const SBinary* bytes = BinaryOf(row.At(kEntryId, PR_ENTRYID));
    const SPropValue* type = row.At(kObjectType, PR_OBJECT_TYPE);
    if (bytes == nullptr || type == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
    const EntryId id(*bytes);
    const bool isList = NumberOf(type) == MAPI_DISTLIST;
    const bool isContainer = NumberOf(type) == MAPI_ABCONT;
    if ((isList || isContainer) && !visited_.Add(id)) return S_OK;
    ComPtr<IUnknown> source;
    ComPtr<IMAPIProp> made;
    if (const HRESULT hr = CopyEntry(id, source, made); FAILED(hr)) return hr;
    if (!isList && !isContainer) return S_OK;
    return DescendInto(*source, *made, isList);
  }

  HRESULT CopyEntry(const EntryId& id, ComPtr<IUnknown>& source, ComPtr<IMAPIProp>& made) {
    const Level& level = levels_.back();
    ULONG type = 0;
    HRESULT hr = HandedOut(source, [&] {
      return level.source->OpenEntry(id.Size(), id.Get(), nullptr, 0, &type, source.Put());
    });
    if (FAILED(hr)) return hr;
    hr = level.target.CreateEntry(id, made);
    if (FAILED(hr)) return hr;
    hr = CopyCommonProps(nullptr, source.Get(), made.Get(), what_.flags, nullptr);
    return FAILED(hr) ? hr : made->SaveChanges(KEEP_OPEN_READWRITE);
  }

  // What was made is met as well: the source's tables may show it.
  HRESULT DescendInto(IUnknown& source, IMAPIProp& made, bool isList) {
    EntryId madeId;
    if (const HRESULT hr = ReadEntryId(made, madeId); FAILED(hr)) return hr;
    visited_.Add(madeId);
    return Descend(source, made, isList || what_.contents, !isList && what_.hierarchy);
  }

  const ContainerCopy what_;
  VisitedEntries& visited_;
  std::vector<Level> levels_;
};

}  // namespace

bool VisitedEntries::Add(EntryId entryId) {
  return entryId.IsEmpty() || identifiers_.insert(std::move(entryId)).second;
}

HRESULT ReadEntryId(IUnknown& object, EntryId& entryId) {
  static constexpr TagArray kTag{PR_ENTRYID};
  ComPtr<IMAPIProp> properties;
  if (const HRESULT hr = Query(object, IID_IMAPIProp, properties); FAILED(hr)) return hr;
  PropValues found;
  if (const HRESULT hr = ReadProps(*properties, kTag, found); FAILED(hr)) return hr;
  const SBinary* bytes = BinaryOf(ForeignValues(found).Find(PR_ENTRYID));
  entryId = bytes == nullptr ? EntryId() : EntryId(*bytes);
  return S_OK;
}

HRESULT CopyContainer(IUnknown& source, IUnknown& destination, const ContainerCopy& what,
                      VisitedEntries& visited) {
  return ContainerWalk(what, visited).Run(source, destination);
}

}  // namespace orv
