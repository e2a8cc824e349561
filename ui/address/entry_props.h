// Properties of one entry, read from the entry itself.
#pragma once

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"

namespace orv::ui {

// An entry opened through the address book. Calls providers; none of their exceptions passes.
class OpenedEntry {
 public:
  HRESULT Open(IAddrBook& book, const SBinary& identifier);
  // After a successful Open.
  ULONG ObjectType() const { return objectType_; }
  HRESULT Read(const SPropTagArray* tags, PropValues& values) const;

 private:
  ComPtr<IMAPIProp> properties_;
  ULONG objectType_ = 0;
};

}  // namespace orv::ui
