#include "tools/orvctl/check/tour.h"

#include <algorithm>

namespace orvctl::check {
namespace {

// A hierarchy or a container may be endless, honestly or not.
constexpr LONG kMostContainers = 200;
constexpr size_t kSample = 24;

Found FoundIn(const SRow& row, const Bytes& container) {
  const ValueView values(row);
  const LPCWSTR name = values.Text(PR_DISPLAY_NAME_W);
  Found found{BytesOf(values.Binary(PR_ENTRYID)), values.Number(PR_OBJECT_TYPE), name != nullptr ? name : L"",
              container};
  for (const ULONG each : kEntryColumns) {
    if (values.Find(each) == nullptr) found.missing.push_back(each);
  }
  return found;
}

// Nothing can be done with rows that cannot be opened, so the lack is told once, under its own rule.
void RequireIds(const char* rule, const std::vector<Found>& rows, const std::string& table) {
  const auto lacking =
      std::count_if(rows.begin(), rows.end(), [](const Found& each) { return each.id.empty(); });
  if (lacking == 0) return;
  FailOf(rule, Count(static_cast<size_t>(lacking), "row") + " of the " + std::to_string(rows.size()) +
                   " read of " + table + " without PR_ENTRYID");
}

void ReadContents(const Stage& stage, const Found& container, std::vector<Found>& entries) {
  const Opened opened = RequireOpen(stage.probe, stage.book(), container.id);
  const ComPtr<IMAPITable> table = ContentsOf(stage.probe, opened.object);
  if (!table) return;
  SetColumns(stage.probe, table.Get(), kEntryColumns);
  const RowSet rows = QueryRows(stage.probe, table.Get(), kMostEntries);
  std::vector<Found> listed;
  for (ULONG i = 0; i < rows->cRows; ++i) listed.push_back(FoundIn(rows->aRow[i], container.id));
  RequireIds("props.required", listed, "the contents of '" + ToUtf8(container.name) + "'");
  entries.insert(entries.end(), listed.begin(), listed.end());
}

}  // namespace

Answer RequireRow(const Stage& stage) {
  Answer row = GetProps(stage.probe, stage.book(), &kRowColumns);
  if (FAILED(row.result))
    FailOf("row.columns", "GetProps of the provider object answered " + Name(row.result));
  if (row.view().Binary(PR_ENTRYID).cb == 0) FailOf("row.columns", "the provider's row has no PR_ENTRYID");
  return row;
}

Opened RequireRoot(const Stage& stage, const Bytes& id) {
  Opened root = Open(stage.probe, stage.book(), id);
  if (FAILED(root.result))
    FailOf("row.root", "OpenEntry of it, " + ToHex(id) + ", answered " + Name(root.result));
  if (!root.object || !root.props()) FailOf("row.root", "OpenEntry of it hands out nothing with properties");
  return root;
}

Tour::Tour(const Stage& stage) {
  root = BytesOf(RequireRow(stage).view().Binary(PR_ENTRYID));
  const ComPtr<IMAPITable> hierarchy = HierarchyOf(stage.probe, RequireRoot(stage, root).object);
  if (!hierarchy) return;
  SetColumns(stage.probe, hierarchy.Get(), kRowColumns);
  const RowSet rows = QueryRows(stage.probe, hierarchy.Get(), kMostContainers);
  for (ULONG i = 0; i < rows->cRows; ++i) {
    containers.push_back(FoundIn(rows->aRow[i], {}));
    containerFlags.push_back(ValueView(rows->aRow[i]).Number(PR_CONTAINER_FLAGS));
  }
  RequireIds("hierarchy.columns", containers, "the hierarchy");
  for (const Found& each : containers) ReadContents(stage, each, entries);
}

std::vector<Found> Tour::Sample(size_t most) const {
  std::vector<Found> sample;
  const size_t step = std::max<size_t>(entries.size() / std::max<size_t>(most, 1), 1);
  for (size_t i = 0; i < entries.size() && sample.size() < most; i += step) sample.push_back(entries[i]);
  return sample;
}

const Found& Tour::AnyEntry() const {
  if (entries.empty()) NotOffered("there is no entry to look at; give one with --config");
  return entries[entries.size() / 2];
}

void Tour::RequireColumn(ULONG tag) const {
  const auto lacks = [tag](const Found& each) {
    return std::find(each.missing.begin(), each.missing.end(), tag) != each.missing.end();
  };
  const auto lacking = std::count_if(entries.begin(), entries.end(), lacks);
  if (lacking == 0) return;
  FailOf("props.required", Count(static_cast<size_t>(lacking), "row") + " of the " +
                               std::to_string(entries.size()) + " read without " + diag::PropTagName(tag));
}

std::vector<Found> Tour::Everything() const {
  std::vector<Found> all = Sample(kSample);
  all.push_back({root, MAPI_ABCONT, L"the root container", {}});
  all.insert(all.end(), containers.begin(),
             containers.begin() + static_cast<ptrdiff_t>(std::min(containers.size(), kSample)));
  return all;
}

LongestTable::LongestTable(const Stage& on, size_t least) : stage(on) {
  const Tour tour(stage);
  container = tour.root;
  rows = static_cast<ULONG>(tour.containers.size());
  for (const Found& each : tour.containers) {
    const ComPtr<IMAPITable> table =
        ContentsOf(stage.probe, RequireOpen(stage.probe, stage.book(), each.id).object);
    const ULONG count = table ? RowCount(stage.probe, table.Get()) : 0;
    if (count < rows && isContents) continue;
    if (count == 0) continue;
    container = each.id;
    isContents = true;
    rows = count;
  }
  if (rows < least)
    NotOffered("the longest table has " + Count(rows, "row") + ", and this needs " + std::to_string(least));
}

ComPtr<IMAPITable> LongestTable::Make() const {
  const Opened opened = RequireOpen(stage.probe, stage.book(), container);
  ComPtr<IMAPITable> table =
      isContents ? ContentsOf(stage.probe, opened.object) : HierarchyOf(stage.probe, opened.object);
  Require(bool{table}, "the table that was there before is not offered now");
  SetColumns(stage.probe, table.Get(), kEntryColumns);
  return table;
}

}  // namespace orvctl::check
