/* Linked by a linker of the other family, without any run-time library, to try that import library. */
long OrvAllocateBuffer(unsigned long size, void** buffer);
unsigned long OrvFreeBuffer(void* buffer);
void ExitProcess(unsigned code);

int start(void) {
  void* buffer = 0;
  unsigned failed = OrvAllocateBuffer(16, &buffer) != 0 || OrvFreeBuffer(buffer) != 0;
  ExitProcess(failed);
  return 1;
}
