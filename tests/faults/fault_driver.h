// Runs a scenario again and again, letting its first, second, third ... allocation fail, until it gets through
// without meeting the failure. Every time: a documented result, nothing left behind, and it works afterwards.
#pragma once

#include <functional>
#include <vector>

#include "tests/faults/seam_client.h"

namespace orv::test {

struct Scenario {
  // Armed. Gives back all that it obtained; its result is the first failing one.
  std::function<HRESULT()> run;
  // Unarmed, before every run.
  std::function<void()> prepare = [] {};
  // Unarmed, after a run that met the failure.
  std::function<void(HRESULT)> verify = [](HRESULT) {};
  // Documented results besides MAPI_E_NOT_ENOUGH_MEMORY. S_OK where a step's failure is not looked at.
  std::vector<HRESULT> results = {};
};

void Drive(const SeamClient& client, const Scenario& scenario);

}  // namespace orv::test
