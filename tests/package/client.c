/* A client in C, by the call macros: opens the profiles of the current user and reads their table. */
#define COBJMACROS
#include <orv/orv.h>

int main(void) {
  LPORVPROFADMIN profiles = NULL;
  LPMAPITABLE table = NULL;
  ULONG count = 0;
  if (FAILED(OrvAdminProfiles(MAPI_UNICODE, &profiles, 0))) return 1;
  if (FAILED(IOrvProfAdmin_GetProfileTable(profiles, MAPI_UNICODE, &table))) return 2;
  if (FAILED(IMAPITable_GetRowCount(table, 0, &count))) return 3;
  IMAPITable_Release(table);
  return (int)IOrvProfAdmin_Release(profiles);
}
