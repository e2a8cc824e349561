// The file itself, and whether it comes and goes.
#include <algorithm>

#include "tools/orvctl/check/tour.h"
#include "tools/orvctl/dependencies.h"

namespace orvctl::check {
namespace {

// With the letter of the model in it, as the catalogue names the file.
constexpr size_t kLongestName = 15;

constexpr char kMachineRule[] = "image.machine";

// Anything else that could be said of a file that is no library at all would be said of nothing.
Image RequireImage(const Probe& probe) {
  std::string why;
  std::optional<Image> image = ReadImageFile(probe.request.library, &why);
  if (!image) FailOf(kMachineRule, "the file is " + why);
  if (image->isShort) FailOf(kMachineRule, "the file is shorter than its own header says");
  if (!image->isLibrary) FailOf(kMachineRule, "it is a program, not a library");
  return std::move(*image);
}

Verdict CheckMachine(Probe& probe) {
  const Image image = RequireImage(probe);
  Require(image.machine == kMachineX64, "made for " + MachineName(image.machine));
  return Ok("x64");
}

Verdict CheckName(Probe& probe) {
  RequireImage(probe);
  const WideString& path = probe.request.library;
  const std::string name = ToUtf8(path.substr(path.find_last_of(L"\\/") + 1));
  const size_t length = path.size() - (path.find_last_of(L"\\/") + 1);
  Require(length <= kLongestName, name + " has " + Count(length, "character"));
  return Ok(name);
}

std::string JoinNames(const Image& image) {
  std::string names;
  for (const ImageExport& each : image.exports) {
    const std::string name = each.name.empty() ? "#" + std::to_string(each.ordinal) : each.name;
    names.append(names.empty() ? "" : ", ").append(name);
  }
  return names.empty() ? "nothing" : names;
}

// One that is there under its own name, or why not.
void RequireExport(const Image& image, const std::string& name) {
  if (image.Exports(name)) return Require(UndecoratedName(name).empty(), name + " is a decorated name");
  for (const ImageExport& each : image.exports)
    Require(UndecoratedName(each.name) != name, name + " is exported decorated, as " + each.name);
  Fail(name + " is not exported; it exports " + JoinNames(image));
}

Verdict CheckExports(Probe& probe) {
  const Image image = RequireImage(probe);
  RequireExport(image, ORV_PROVIDER_OPEN_NAME);
  const std::string& entry = probe.request.entry;
  if (entry.empty())
    Fail("which one is the service entry function? Name it with --entry; it exports " + JoinNames(image));
  RequireExport(image, entry);
  return Ok(std::string(ORV_PROVIDER_OPEN_NAME) + ", " + entry);
}

Verdict CheckImports(Probe& probe) {
  const Image image = RequireImage(probe);
  const std::vector<MissingImport> missing = FindMissingImports(probe.request.library);
  std::string seen;
  for (const MissingImport& each : missing) seen.append(seen.empty() ? "" : "; ").append(each.Describe());
  Require(missing.empty(), seen);
  return Ok(Count(image.imports.size(), "library", "libraries") + " imported");
}

Verdict CheckLoads(Probe& probe) {
  const Image image = RequireImage(probe);
  if (image.machine != kMachineX64)
    FailOf(kMachineRule, "it cannot be loaded: made for " + MachineName(image.machine));
  Module module(probe);
  module.RequireEntry(probe);
  return Ok("loaded, with both functions");
}

bool IsLoaded(const Probe& probe) {
  HMODULE module = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, probe.request.library.c_str(),
                            &module) != 0;
}

Verdict CheckUnloads(Probe& probe) {
  Module module(probe);
  Require(IsLoaded(probe), "it is not loaded under its own path");
  probe.Step("FreeLibrary");
  module.Free();
  Require(!IsLoaded(probe), "loaded and freed without any call, it stays");
  return Ok("gone");
}

Verdict CheckThreadLocals(Probe& probe) {
  {
    const Stage stage(probe);
    const Tour tour(stage);
    for (const Found& each : tour.Everything()) RequireOpen(probe, stage.book(), each.id);
  }
  probe.Step("the end of the session");
  Require(
      !IsLoaded(probe),
      "freed after a session it stays: thread-local objects with destructors hold it, or it holds itself");
  return Ok("gone after a session");
}

constexpr NamedCheck kImageChecks[] = {
    {"image.machine", CheckMachine},           {"image.name", CheckName},   {"image.exports", CheckExports},
    {"image.imports", CheckImports},           {"image.loads", CheckLoads}, {"image.unloads", CheckUnloads},
    {"image.thread-locals", CheckThreadLocals}};

}  // namespace

std::span<const NamedCheck> ImageChecks() { return kImageChecks; }

}  // namespace orvctl::check
