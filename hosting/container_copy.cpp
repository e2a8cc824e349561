// The walk over a container's tables. A stack of our own instead of recursion: the depth is the caller's
// data.
#include "hosting/container_copy.h"

#include <vector>

#include "hosting/object_copy.h"
#include "orv/orvflags.h"
#include "orv/orvguids.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "props/prop_value.h"

namespace orv {
namespace {

constexpr LONG kRowsAtOnce = 50;

template <class Interface>
HRESULT Query(IUnknown* object, const IID& iid, ComPtr<Interface>& out) {
  return object->QueryInterface(iid, reinterpret_cast<void**>(out.Put()));
}

// A container or a list that entries are created in: two interfaces with one method in common.
class Target {
 public:
  static HRESULT Of(IUnknown* object, Target& target) {
    if (SUCCEEDED(Query(object, IID_IABContainer, target.container_))) return S_OK;
    return Query(object, IID_IDistList, target.list_);
  }
  HRESULT CreateEntry(const SBinary& templateId, ComPtr<IMAPIProp>& entry) const {
    const auto id = reinterpret_cast<LPENTRYID>(templateId.lpb);
    return container_ ? container_->CreateEntry(templateId.cb, id, 0, entry.Put())
                      : list_->CreateEntry(templateId.cb, id, 0, entry.Put());
  }

 private:
  ComPtr<IABContainer> container_;
  ComPtr<IDistList> list_;
};

// The rows of one table, read in blocks; `current` is good until the next step.
class RowReader {
 public:
  HRESULT Open(ComPtr<IMAPITable> table) {
    SizedSPropTagArray(2, columns) = {2, {PR_ENTRYID, PR_OBJECT_TYPE}};
    table_ = std::move(table);
    return table_->SetColumns(reinterpret_cast<LPSPropTagArray>(&columns), 0);
  }
  // S_FALSE behind the last row.
  HRESULT Next(const SRow*& row) {
    if (!rows_ || next_ == rows_->cRows) {
      next_ = 0;
      if (const HRESULT hr = table_->QueryRows(kRowsAtOnce, 0, rows_.Put()); FAILED(hr)) return hr;
      if (!rows_ || rows_->cRows == 0) return S_FALSE;
    }
    row = &rows_->aRow[next_++];
    return S_OK;
  }
  explicit operator bool() const { return static_cast<bool>(table_); }
  void Close() { *this = RowReader(); }

 private:
  ComPtr<IMAPITable> table_;
  RowSetPtr rows_;
  ULONG next_ = 0;
};

// One container being copied: its entries first, then the containers below it.
struct Level {
  ComPtr<IMAPIContainer> source;
  Target target;
  bool contents = false;   // still to be read
  bool hierarchy = false;  // still to be read
  RowReader rows;
};

class ContainerWalk {
 public:
  ContainerWalk(const ContainerCopy& what, VisitedEntries& visited) : what_(what), visited_(visited) {}

  HRESULT Run(IUnknown* source, IUnknown* destination) {
    HRESULT hr = Descend(source, destination, what_.contents, what_.hierarchy);
    while (SUCCEEDED(hr) && !levels_.empty()) hr = Step();
    return hr;
  }

 private:
  HRESULT Descend(IUnknown* source, IUnknown* destination, bool contents, bool hierarchy) {
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
    if (!level.rows) return OpenNextTable(level);
    const SRow* row = nullptr;
    const HRESULT hr = level.rows.Next(row);
    if (FAILED(hr)) return hr;
    if (hr == S_OK) return CopyRow(*row);
    level.rows.Close();
    return S_OK;
  }

  HRESULT OpenNextTable(Level& level) {
    if (!level.contents && !level.hierarchy) {
      levels_.pop_back();
      return S_OK;
    }
    ComPtr<IMAPITable> table;
    const HRESULT hr = level.contents ? level.source->GetContentsTable(MAPI_UNICODE, table.Put())
                                      : level.source->GetHierarchyTable(MAPI_UNICODE, table.Put());
    if (FAILED(hr)) return hr;
    (level.contents ? level.contents : level.hierarchy) = false;
    return level.rows.Open(std::move(table));
  }

  HRESULT CopyRow(const SRow& row) {
    const SPropValue* id = FindValue(row.lpProps, row.cValues, PR_ENTRYID);
    const SPropValue* type = FindValue(row.lpProps, row.cValues, PR_OBJECT_TYPE);
    if (id == nullptr || type == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
    const bool isList = type->Value.ul == MAPI_DISTLIST;
    const bool isContainer = type->Value.ul == MAPI_ABCONT;
    if ((isList || isContainer) && !visited_.Add(id->Value.bin)) return S_OK;
    ComPtr<IUnknown> source;
    ComPtr<IMAPIProp> made;
    if (const HRESULT hr = CopyEntry(id->Value.bin, source, made); FAILED(hr)) return hr;
    if (!isList && !isContainer) return S_OK;
    return DescendInto(source.Get(), made.Get(), isList);
  }

  HRESULT CopyEntry(const SBinary& id, ComPtr<IUnknown>& source, ComPtr<IMAPIProp>& made) {
    const Level& level = levels_.back();
    ULONG type = 0;
    const auto entryId = reinterpret_cast<LPENTRYID>(id.lpb);
    HRESULT hr = level.source->OpenEntry(id.cb, entryId, nullptr, 0, &type, source.Put());
    if (FAILED(hr)) return hr;
    hr = level.target.CreateEntry(id, made);
    if (FAILED(hr)) return hr;
    hr = CopyCommonProps(nullptr, source.Get(), made.Get(), what_.flags, nullptr);
    return FAILED(hr) ? hr : made->SaveChanges(KEEP_OPEN_READWRITE);
  }

  // What was made is met as well: the source's tables may show it.
  HRESULT DescendInto(IUnknown* source, IMAPIProp* made, bool isList) {
    std::string madeId;
    if (const HRESULT hr = ReadEntryId(made, madeId); FAILED(hr)) return hr;
    visited_.Add(madeId);
    return Descend(source, made, isList || what_.contents, !isList && what_.hierarchy);
  }

  const ContainerCopy what_;
  VisitedEntries& visited_;
  std::vector<Level> levels_;
};

}  // namespace

bool VisitedEntries::Add(const SBinary& entryId) {
  return Add(std::string(reinterpret_cast<const char*>(entryId.lpb), entryId.cb));
}

bool VisitedEntries::Add(std::string entryId) {
  return entryId.empty() || identifiers_.insert(std::move(entryId)).second;
}

HRESULT ReadEntryId(IUnknown* object, std::string& entryId) {
  ComPtr<IMAPIProp> properties;
  if (const HRESULT hr = Query(object, IID_IMAPIProp, properties); FAILED(hr)) return hr;
  SPropTagArray tags = {1, {PR_ENTRYID}};
  PropValues found;
  const HRESULT hr = properties->GetProps(&tags, MAPI_UNICODE, &found.count, found.values.Put());
  if (FAILED(hr)) return hr;
  entryId.clear();
  const SPropValue* value = FindValue(found.values.Get(), found.count, PR_ENTRYID);
  if (value != nullptr)
    entryId.assign(reinterpret_cast<const char*>(value->Value.bin.lpb), value->Value.bin.cb);
  return S_OK;
}

HRESULT CopyContainer(IUnknown* source, IUnknown* destination, const ContainerCopy& what,
                      VisitedEntries& visited) {
  return ContainerWalk(what, visited).Run(source, destination);
}

}  // namespace orv
