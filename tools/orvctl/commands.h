// The commands. Each reports what it did or found and throws a CommandError where it cannot.
#pragma once

#include "tools/orvctl/command_line.h"
#include "tools/orvctl/library.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

Report ListProfiles(const Library& library, const Options& options);
Report ShowProfile(const Library& library, const Options& options);
Report CreateProfile(const Library& library, const Options& options);
Report DeleteProfile(const Library& library, const Options& options);
Report CopyProfile(const Library& library, const Options& options);
Report RenameProfile(const Library& library, const Options& options);
Report DefaultProfile(const Library& library, const Options& options);
Report ExportProfile(const Library& library, const Options& options);
Report ApplyProfile(const Library& library, const Options& options);

Report ListServices(const Library& library, const Options& options);
Report ShowService(const Library& library, const Options& options);
Report AddService(const Library& library, const Options& options);
Report RemoveService(const Library& library, const Options& options);
Report SetService(const Library& library, const Options& options);
Report ListAvailableServices(const Library& library, const Options& options);

Report ShowTree(const Library& library, const Options& options);
Report ListEntries(const Library& library, const Options& options);
Report ShowEntry(const Library& library, const Options& options);
Report FindEntries(const Library& library, const Options& options);
Report DefaultBook(const Library& library, const Options& options);
Report PathOfBooks(const Library& library, const Options& options);
Report WatchBook(const Library& library, const Options& options);
Report CheckBookFile(const Library& library, const Options& options);
Report RepairBookFile(const Library& library, const Options& options);
Report ExpandList(const Library& library, const Options& options);

Report AddContact(const Library& library, const Options& options);
Report EditContact(const Library& library, const Options& options);
Report RemoveContacts(const Library& library, const Options& options);
Report RestoreContacts(const Library& library, const Options& options);
Report CopyContacts(const Library& library, const Options& options);
Report AddToGroup(const Library& library, const Options& options);
Report RemoveFromGroup(const Library& library, const Options& options);
Report ListGroup(const Library& library, const Options& options);

Report ImportFiles(const Library& library, const Options& options);
Report ExportBook(const Library& library, const Options& options);

Report GetUserInfo(const Library& library, const Options& options);
Report SetUserInfo(const Library& library, const Options& options);

Report ConfigureProfile(const Library& library, const Options& options);
Report PickRecipients(const Library& library, const Options& options);
Report ShowHelp(const Library& library, const Options& options);

// Loads the library by itself: one that cannot be loaded is something found.
Report Examine(const Options& options, std::vector<Message>& problems);
// Loads no library of ours: the provider alone is looked at.
Report CheckProvider(const Options& options);
// Files by themselves.
Report CheckFile(const Options& options);
Report ConvertFile(const Options& options);

// What sessions tell of besides is added to `problems`, also where the command then fails.
Report RunCommand(const Options& options, std::vector<Message>& problems);

}  // namespace orvctl
