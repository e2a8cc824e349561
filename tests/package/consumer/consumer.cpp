// Through the import library: a buffer, and the profiles of the current user.
#include <orv/orv.h>

int main() {
  void* buffer = nullptr;
  if (FAILED(OrvAllocateBuffer(16, &buffer)) || OrvFreeBuffer(buffer) != 0) return 1;
  IOrvProfAdmin* admin = nullptr;
  if (FAILED(OrvAdminProfiles(MAPI_UNICODE, &admin, 0))) return 2;
  return static_cast<int>(admin->Release());
}
