// Listing and searching: rows are printed while they are read.
#include <algorithm>

#include "tools/orvctl/commands.h"
#include "tools/orvctl/entry_columns.h"
#include "tools/orvctl/row_printer.h"
#include "tools/orvctl/search.h"
#include "tools/orvctl/sources.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

// Entries of the containers that are asked for, printed while they are read, up to the limit.
class EntryPrinter {
 public:
  EntryPrinter(const Library& library, const Options& options)
      : library_(library),
        options_(options),
        book_(library, options.profile),
        columns_(options.fields),
        printer_(options, columns_.columns()) {}

  LPSPropTagArray tags() { return columns_.tags(); }
  size_t count() const { return printer_.count(); }

  void Walk(const std::function<bool(const Container&, IMAPITable*)>& walk) {
    WalkContainers(book_, ChooseContainers(library_, book_, options_.container), messages_, walk);
  }
  // What prints the rows of a container, and answers whether more are wanted.
  std::function<bool(const ValueView&)> PrintOf(const Container& container) {
    return [this, name = container.name](const ValueView& row) {
      const size_t most = options_.limit.value_or(SIZE_MAX);
      if (printer_.count() < most) printer_.Print(columns_.Cells(row, name));
      return printer_.count() < most;
    };
  }
  // Where nothing could be read nobody knows that there is nothing.
  Report Finish(const char* ifEmpty) {
    const bool isKnown =
        std::all_of(messages_.begin(), messages_.end(), [](const Message& each) { return each.IsWarning(); });
    printer_.Finish(isKnown && !options_.quiet ? ifEmpty : "");
    Report report;
    report.isSilent = true;
    report.messages = std::move(messages_);
    return report;
  }

 private:
  const Library& library_;
  const Options& options_;
  const Book book_;
  EntryColumns columns_;
  RowPrinter printer_;
  std::vector<Message> messages_;
};

// "company:desc" begins with the last one.
void Sort(IMAPITable* contents, const std::string& wanted, const Container& container) {
  if (wanted.empty()) return;
  const size_t colon = wanted.find(':');
  struct {
    ULONG count, categories, expanded;
    SSortOrder order;
  } orders = {1, 0, 0, {EntryColumns::TagOf(wanted.substr(0, colon)), TABLE_SORT_ASCEND}};
  if (wanted.substr(std::min(colon, wanted.size())) == ":desc") orders.order.ulOrder = TABLE_SORT_DESCEND;
  const std::string doing = "sort '" + container.name + "' by '" + wanted + "'";
  Check(Foreign(doing, [&] { return contents->SortTable(reinterpret_cast<LPSSortOrderSet>(&orders), 0); }),
        doing);
}

// What is wrong with it is told once, not by every container.
void RequireOrder(const std::string& wanted) {
  if (wanted.empty()) return;
  const std::string field = wanted.substr(0, wanted.find(':')), order = wanted.substr(field.size());
  if (!order.empty() && order != ":asc" && order != ":desc")
    throw CommandError(kUsage, "'" + wanted + "' is not FIELD, FIELD:asc or FIELD:desc");
  EntryColumns::TagOf(field);
}

// Moves to the first row at or behind the text in the order of the table; false behind the last one.
bool BeginAt(IMAPITable* contents, const Options& options, const Container& container) {
  if (options.from.empty()) return true;
  const std::string field = options.sort.substr(0, options.sort.find(':'));
  WideString text = ToWide(options.from);
  SPropValue value = {};
  value.ulPropTag = field.empty() ? PR_DISPLAY_NAME_W : EntryColumns::TagOf(field);
  value.Value.lpszW = text.data();
  SRestriction restriction = {};
  restriction.rt = RES_PROPERTY;
  const bool isDescending = options.sort.substr(field.size()) == ":desc";
  restriction.res.resProperty = {isDescending ? RELOP_LE : RELOP_GE, value.ulPropTag, &value};
  const std::string doing = "find '" + options.from + "' in '" + container.name + "'";
  const HRESULT result =
      Foreign(doing, [&] { return contents->FindRow(&restriction, BOOKMARK_BEGINNING, 0); });
  if (result == MAPI_E_NOT_FOUND) return false;
  Check(result, doing);
  return true;
}

}  // namespace

Report ListEntries(const Library& library, const Options& options) {
  RequireOrder(options.sort);
  EntryPrinter entries(library, options);
  entries.Walk([&](const Container& container, IMAPITable* contents) {
    Sort(contents, options.sort, container);
    const RowsFrom from = options.from.empty() ? RowsFrom::kBeginning : RowsFrom::kHere;
    return !BeginAt(contents, options, container) ||
           ForEachRow(library, contents, entries.tags(), "list the entries of '" + container.name + "'",
                      entries.PrintOf(container), from);
  });
  return entries.Finish("There are no entries.");
}

Report FindEntries(const Library& library, const Options& options) {
  EntryPrinter entries(library, options);
  entries.Walk([&](const Container& container, IMAPITable* contents) {
    return ForEachFound(library, container, contents, options.text, entries.tags(),
                        entries.PrintOf(container));
  });
  const bool isNothing = entries.count() == 0;
  Report report = entries.Finish("Nothing was found.");
  if (isNothing && report.messages.empty() && AsEntryId(options.text))
    report.Warn("that is an identifier; 'orvctl book show' shows its entry");
  return report;
}

}  // namespace orvctl
