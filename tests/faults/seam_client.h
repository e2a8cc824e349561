// The library's test build as a client sees it, loaded from an installation, with its fault seam. Every buffer that it
// hands out goes back to it: the owners below know no other library.
#pragma once

#include <iosfwd>
#include <memory>

#include "orv/orv.h"
#include "platform/faults.h"
#include "platform/win.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

// What is alive in the library.
struct LiveCounts {
  long objects;
  long taskBlocks;
  long newBlocks;
  friend bool operator==(const LiveCounts&, const LiveCounts&) = default;
};
void PrintTo(const LiveCounts& live, std::ostream* out);

class SeamClient {
 public:
  // There is one at a time; the owners use it.
  explicit SeamClient(HMODULE library);
  ~SeamClient();
  SeamClient(const SeamClient&) = delete;
  SeamClient& operator=(const SeamClient&) = delete;
  static const SeamClient& Current();

  LPORVOPEN open;
  LPORVADMINPROFILES adminProfiles;
  LPORVOPENUSERINFO openUserInfo;
  LPFREEPROWS freeProws;
  LPFREEPADRLIST freePadrlist;
  FakeBuffers buffers;

  void Arm(faults::Site site, std::size_t nth) const;
  bool Fired(faults::Site site) const;
  LiveCounts Live() const;

 private:
  HMODULE library_;
};

struct BufferDeleter {
  void operator()(void* buffer) const { SeamClient::Current().buffers.free(buffer); }
};
struct RowsDeleter {
  void operator()(SRowSet* rows) const { SeamClient::Current().freeProws(rows); }
};
struct AdrListDeleter {
  void operator()(ADRLIST* list) const { SeamClient::Current().freePadrlist(list); }
};
template <class T>
using Buffer = std::unique_ptr<T, BufferDeleter>;
using Rows = std::unique_ptr<SRowSet, RowsDeleter>;
using AdrList = std::unique_ptr<ADRLIST, AdrListDeleter>;

// Lets a call write into an owner.
template <class Owner>
class Out {
 public:
  explicit Out(Owner& owner) : owner_(owner) {}
  ~Out() { owner_.reset(raw_); }
  Out(const Out&) = delete;
  Out& operator=(const Out&) = delete;
  operator typename Owner::pointer *() { return &raw_; }

 private:
  Owner& owner_;
  typename Owner::pointer raw_ = nullptr;
};

}  // namespace orv::test
