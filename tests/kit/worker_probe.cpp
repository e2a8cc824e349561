// A library with a worker in it, as a provider has one: loaded and freed by the tests.
#include "orv/kit/unload.hpp"
#include "orv/kit/worker.hpp"

using orv::kit::Worker;

extern "C" {

__declspec(dllexport) Worker* OpenWorker() { return new Worker; }

// Signals `begun`, then waits for `end` or, when it listens, for the worker's stop.
__declspec(dllexport) HRESULT PostWait(Worker* worker, HANDLE begun, HANDLE end, BOOL listens) {
  return worker->Post([=](const Worker::Signal& signal) {
    SetEvent(begun);
    const HANDLE either[] = {end, signal.Event()};
    WaitForMultipleObjects(listens ? 2 : 1, either, FALSE, INFINITE);
  });
}

__declspec(dllexport) BOOL CloseWorker(Worker* worker) {
  const BOOL ended = worker->Stop();
  delete worker;
  return ended;
}

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) orv::sdk::GiveBackRunTime(library);
  return TRUE;
}
}
