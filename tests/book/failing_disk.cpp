// The engine's own file system with one function of its files replaced.
#include "tests/book/failing_disk.h"

#include <sqlite3.h>

#include <atomic>

namespace book::test {
namespace {

std::atomic<int> g_result{SQLITE_OK};
sqlite3_vfs* g_system = nullptr;
sqlite3_vfs g_failing;
const sqlite3_io_methods* g_original = nullptr;
sqlite3_io_methods g_methods;

int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
  const int result = g_result;
  return result != SQLITE_OK ? result : g_original->xWrite(file, bytes, size, offset);
}

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  const int result = g_system->xOpen(g_system, name, file, flags, outFlags);
  if (result != SQLITE_OK || file->pMethods == nullptr) return result;
  if (g_original == nullptr) {
    g_original = file->pMethods;
    g_methods = *g_original;
    g_methods.xWrite = Write;
  }
  if (file->pMethods == g_original) file->pMethods = &g_methods;
  return result;
}

}  // namespace

FailingDisk::FailingDisk(int result) { g_result = result; }
FailingDisk::~FailingDisk() { g_result = SQLITE_OK; }

void FailingDisk::Install() {
  if (g_system != nullptr) return;
  sqlite3_initialize();
  g_system = sqlite3_vfs_find(nullptr);
  g_failing = *g_system;
  g_failing.zName = "failing";
  g_failing.xOpen = Open;
  sqlite3_vfs_register(&g_failing, /*default=*/1);
}

}  // namespace book::test
