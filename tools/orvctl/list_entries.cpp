// Listing and searching: rows are printed while they are read.
#include "tools/orvctl/commands.h"
#include "tools/orvctl/entry_columns.h"
#include "tools/orvctl/row_printer.h"
#include "tools/orvctl/search.h"
#include "tools/orvctl/sources.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

// Where nothing could be read nobody knows that there is nothing.
Report Finish(RowPrinter& printer, std::vector<Message> messages, const char* ifEmpty) {
  bool isKnown = true;
  for (const Message& message : messages) isKnown = isKnown && message.IsWarning();
  printer.Finish(isKnown ? ifEmpty : "");
  Report report;
  report.isSilent = true;
  report.messages = std::move(messages);
  return report;
}

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
  const bool isDescending = options.sort.size() > field.size();
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
  const Book book(library, options.profile);
  EntryColumns columns(options.fields);
  RowPrinter printer(options, columns.columns());
  const size_t most = options.limit.value_or(SIZE_MAX);
  std::vector<Message> messages;
  const auto containers = ChooseContainers(library, book, options.container);
  WalkContainers(book, containers, messages, [&](const Container& container, IMAPITable* contents) {
    Sort(contents, options.sort, container);
    const bool isAll = options.from.empty();
    if (!BeginAt(contents, options, container)) return true;
    return ForEachRow(
        library, contents, columns.tags(), "list the entries of '" + container.name + "'",
        [&](const ValueView& row) {
          if (printer.count() < most) printer.Print(columns.Cells(row, container.name));
          return printer.count() < most;
        },
        isAll ? RowsFrom::kBeginning : RowsFrom::kHere);
  });
  return Finish(printer, std::move(messages), "There are no entries.");
}

Report FindEntries(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  EntryColumns columns(options.fields);
  RowPrinter printer(options, columns.columns());
  const size_t most = options.limit.value_or(SIZE_MAX);
  std::vector<Message> messages;
  const auto containers = ChooseContainers(library, book, options.container);
  WalkContainers(book, containers, messages, [&](const Container& container, IMAPITable* contents) {
    return ForEachFound(library, container, contents, options.text, columns.tags(),
                        [&](const ValueView& row) {
                          if (printer.count() < most) printer.Print(columns.Cells(row, container.name));
                          return printer.count() < most;
                        });
  });
  const bool isNothing = printer.count() == 0;
  Report report = Finish(printer, std::move(messages), "Nothing was found.");
  if (isNothing && report.messages.empty() && AsEntryId(options.text))
    report.Warn("that is an identifier; 'orvctl book show' shows its entry");
  return report;
}

}  // namespace orvctl
