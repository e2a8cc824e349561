#include "tools/orvctl/check/rules.h"

#include <algorithm>

namespace orvctl::check {
namespace {

constexpr char kLibrary[] = "1. The library and its place in the catalogue";
constexpr char kEntry[] = "2. The service entry function";
constexpr char kLogon[] = "3. Logging on";
constexpr char kObject[] = "4. The provider object";
constexpr char kIds[] = "Entry identifiers";
constexpr char kProps[] = "Properties";
constexpr char kTables[] = "Tables";
constexpr char kBuffers[] = "5. Who owns which buffer";
constexpr char kLifetime[] = "6. Lifetime";
constexpr char kUnload[] = "What a load must not leave behind";
constexpr char kThreads[] = "7. Threads and exceptions";

using enum Needs;
constexpr Rule kRules[] = {
    {"image.machine", kProcess, "It is a whole library, made for x64 as the address book library is.",
     kLibrary},
    {"image.name", kProcess, "With the model's letter in, its file name has at most 15 characters.",
     kLibrary},
    {"image.exports", kProcess, "It exports ABProviderOpen and its service entry function undecorated.",
     kLibrary},
    {"image.imports", kProcess, "All that it imports is found in its own folder or the system's.", kLibrary},
    {"image.loads", kProcess, "It can be loaded and holds both functions then.", kLibrary},
    {"image.unloads", kProcess, "Freed, it leaves the process.", kUnload},
    {"image.thread-locals", kProcess,
     "It leaves the process after a session too: no thread-local destructors.", kUnload},

    {"entry.contexts", kProcess,
     "Every context that the library uses is answered, and the call keeps neither section, support object "
     "nor buffers.",
     kEntry},
    {"entry.unknown-context", kProcess, "A context that it does not know is MAPI_E_NO_SUPPORT.", kEntry},
    {"entry.null-section", kProcess, "MSG_SERVICE_INSTALL and MSG_SERVICE_UNINSTALL come without a section.",
     kEntry},
    {"entry.refused-value", kProcess, "A value that is refused leaves what is stored as it was.", kEntry},
    {"entry.config", kProcess, "The configuration given by --config is taken.", kEntry},
    {"entry.create-then-logon", kProcess,
     "A service can be logged on with a section that holds nothing of its own, MSG_SERVICE_CREATE called or "
     "not.",
     kEntry},

    {"logon.object", kProcess, "A logon that succeeds hands out a provider object.", kLogon},
    {"logon.uid", kProcess, "It registers the MAPIUID that its entry identifiers bear.", kLogon},
    {"logon.failure", kProcess, "A logon that fails keeps no reference and no buffer.", kLogon},
    {"logon.exceptions", kProcess, "No exception leaves the logon, whatever the section holds.", kThreads},
    {"logon.gives-back", kProcess, "With its last object gone it holds neither support object nor section.",
     kLifetime},

    {"row.columns", kProcess,
     "GetProps answers the five columns of the provider's row in their order, as a container of depth 0.",
     kObject},
    {"row.root", kProcess, "The row's PR_ENTRYID opens the provider's own root container.", kObject},
    {"hierarchy.columns", kProcess, "Each row of the root's hierarchy table has the same five columns.",
     kObject},

    {"id.layout", kProcess, "An identifier begins with four zero bytes and a MAPIUID that was registered.",
     kIds},
    {"id.opens", kProcess,
     "Every identifier that is listed opens its entry, an object of the type that its row says.", kObject},
    {"id.same", kTwoProcesses,
     "One entry has one identifier: in the table, in GetProps, at the next logon, in the next process.",
     kIds},
    {"id.truncated", kProcess, "A part of an identifier, or one with more behind it, opens nothing.", kIds},
    {"id.unaligned", kProcess, "An identifier opens its entry wherever its bytes lie.", kIds},
    {"id.null", kProcess, "An identifier that is null, or has no bytes, does no harm.", kIds},
    {"id.foreign", kProcess, "Another provider's identifier opens nothing.", kIds},
    {"id.mutated", kProcess, "An identifier with changed bytes never opens another entry.", kIds},

    {"props.order", kProcess, "GetProps answers in the order asked, with the type that is stored.", kProps},
    {"props.missing", kProcess,
     "A property that is not there is PT_ERROR with MAPI_E_NOT_FOUND, and the result MAPI_W_ERRORS_RETURNED.",
     kProps},
    {"props.null-tag", kProcess, "PR_NULL among the tags keeps its place.", kProps},
    {"props.unicode", kProcess, "Without MAPI_UNICODE GetProps and GetPropList are MAPI_E_BAD_CHARWIDTH.",
     kProps},
    {"props.all", kProcess, "Without tags GetProps answers all that GetPropList names.", kProps},
    {"props.arguments", kProcess,
     "Null pointers and an empty list of tags are MAPI_E_INVALID_PARAMETER (orvapi.h).", kProps},
    {"props.required", kProcess, "Every entry has PR_ENTRYID, PR_OBJECT_TYPE and PR_DISPLAY_NAME.", kProps},
    {"props.interfaces", kProcess,
     "QueryInterface knows an object's own interface and its bases; of any other it hands out null "
     "(orvapi.h).",
     kProps},

    {"table.count", kProcess, "A table has as many rows as GetRowCount says.", kTables},
    {"table.ends", kProcess, "Reading ends: behind the last row a read succeeds with no rows.", kTables},
    {"table.seeks", kProcess,
     "SeekRow moves from each of the three places, stops at either end and tells how far it went.", kTables},
    {"table.extremes", kProcess, "The largest numbers do no harm, and reading 0 rows is refused.", kTables},
    {"table.no-advance", kProcess, "TBL_NOADVANCE keeps the position.", kTables},
    {"table.backward", kProcess, "A negative number of rows reads those before the position, in table order.",
     kTables},
    {"table.random-access", kProcess, "Row i is the same one whichever way it is reached.", kTables},
    {"table.position", kProcess,
     "SeekRowApprox moves to a fraction of the table, and QueryPosition tells where.", kTables},
    {"table.cost", kProcess, "A row costs the same wherever it lies.", kTables},
    {"table.columns", kProcess, "A row has the columns set, in their order, those that it lacks as PT_ERROR.",
     kTables},
    {"table.null-column", kProcess, "PR_NULL among the columns keeps its place.", kTables},
    {"table.bookmarks", kProcess, "A bookmark leads back to its row until it is freed.", kTables},
    {"table.find-row", kProcess, "FindRow finds the row forwards and backwards, or answers MAPI_E_NOT_FOUND.",
     kTables},
    {"table.restrict", kProcess,
     "Restrict leaves all rows that satisfy it and no others, until a null restriction takes it back.",
     kTables},
    {"table.sort", kProcess,
     "SortTable puts the same rows in the order asked for, until an order without keys takes it back.",
     kTables},
    {"table.independent", kProcess, "Each GetContentsTable gives a table of its own, at its first row.",
     kTables},

    {"memory.failing", kProcess,
     "With any one allocation failing a call fails and hands out nothing, or succeeds in full.", kBuffers},
    {"memory.leaks", kProcess, "What the provider allocates is freed by it or handed out.", kBuffers},
    {"memory.free", kProcess, "A buffer is freed once, and as the root that it is.", kBuffers},
    {"memory.chaining", kProcess, "Buffers are chained to roots only.", kBuffers},
    {"memory.pointers", kProcess,
     "What is handed out points into itself only, never into the provider's data.", kBuffers},
    {"memory.bounds", kProcess, "Nothing is written beside or after the life of a buffer.", kBuffers},

    {"recips.empty", kProcess, "PrepareRecips succeeds for an empty list.", kObject},
    {"recips.foreign", kProcess, "Recipients of other providers stay as they are.", kObject},
    {"recips.types", kProcess,
     "An own recipient gets the properties asked for in front, and keeps what it had, its type among it.",
     kObject},
    {"names.resolve", kProcess,
     "ResolveNames knows an entry by its full name, and leaves recipients alone that are resolved or "
     "unknown.",
     kObject},

    {"write.read-only", kWriting, "What cannot be changed refuses changes and stays as it is.", kProps},
    {"write.create", kWriting, "An entry that is created, filled and saved can be listed and opened.",
     kObject},
    {"write.abandoned", kWriting, "An entry that is created and never saved does not exist.", kObject},
    {"write.conflict", kWriting,
     "Of two who change one entry the second is told MAPI_E_OBJECT_CHANGED, and the first change stays.",
     kProps},
    {"write.list", kWriting,
     "A list shows the entries that were made members and no others; taken out they stay.", kObject},
    {"write.twins", kWriting,
     "With CREATE_CHECK_DUP_STRICT a twin is MAPI_E_COLLISION at SaveChanges, or else an entry like others.",
     kObject},
    {"write.copy", kWriting,
     "CopyEntries of another provider's entry makes one with an identifier of its own.", kObject},
    {"write.delete", kWriting, "A deleted entry is gone, and its identifier is MAPI_E_NOT_FOUND.", kIds},
    {"write.durable", kWritingInTwo,
     "What was saved is there for the next process, under the same identifier.", kIds},

    {"notify.released", kProcess, "Unadvise lets go of the sink, and so does the session's end.", kLifetime},
    {"notify.events", kWriting, "A sink is told of each change of what it was registered for.", kObject},
    {"notify.locks", kWriting, "A sink is called with no lock held: it may use the provider.", kThreads},
    {"notify.after", kWriting, "After Unadvise nothing is notified.", kLifetime},

    {"threads.together", kProcess, "Eight threads may use one provider at once.", kThreads},
    {"threads.release", kProcess, "An object may be used and released on another thread than its maker's.",
     kThreads}};

}  // namespace

std::span<const Rule> AllRules() { return kRules; }

const Rule* FindRule(std::string_view name) {
  const auto found =
      std::find_if(std::begin(kRules), std::end(kRules), [&](const Rule& each) { return each.name == name; });
  return found != std::end(kRules) ? found : nullptr;
}

std::string RuleNames() {
  std::string names;
  for (const Rule& each : kRules) names.append(names.empty() ? "" : ", ").append(each.name);
  return names;
}

}  // namespace orvctl::check
