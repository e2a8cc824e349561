// A provider that answers slowly, calls back into the address book and registers identifiers while it is used.
#pragma once

#include <atomic>
#include <mutex>

#include "orv/orvbase.hpp"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::soak {

class BusyProvider final : public test::FakeScript {
 public:
  BusyProvider();

  // From now on, and until it is given null, it calls back into this.
  void Use(IAddrBook* book) { book_ = book; }
  // Takes the support object of the last logon away again.
  void DropSupport();
  // Calls that have not returned.
  int inside() const { return inside_; }

  test::FakeAnswer OnCall(const char* operation) override;
  void OnService(const test::FakeServiceCall&, IProfSect*, IOrvSupport*) override {}
  ULONG OnAdvise(const std::string& key, ULONG events, IMAPIAdviseSink* sink) override;
  HRESULT OnUnadvise(ULONG connection) override;

 private:
  void CallBack();
  void RegisterLate();

  std::atomic<IAddrBook*> book_{nullptr};
  std::atomic<int> inside_{0};
  std::atomic<unsigned> calls_{0};
  sdk::Lock advising_, support_;
};

}  // namespace orv::soak
