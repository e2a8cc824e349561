// Copying properties between any two objects through their published interfaces, which lock themselves.
// All of this calls providers: their exceptions pass through.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

// Copies the properties of `include` (all when null) that are neither binary nor objects. MAPI_NOREPLACE in
// the flags keeps what the destination has. `problems` may be null.
HRESULT CopyCommonProps(const SPropTagArray* include, IUnknown* source, IUnknown* destination, ULONG flags,
                        SPropProblemArray** problems);

// Source and destination with the interfaces that the caller knows them by.
struct CopyEnds {
  const IID* sourceInterface;
  IUnknown* source;
  const IID* destinationInterface;
  IUnknown* destination;
};

// What CopyProps and CopyTo of the mail user and of the support object do: as above, and for containers their
// contents and hierarchy too when the tags name them.
HRESULT CopyObjectProps(const CopyEnds& ends, const SPropTagArray* include, ULONG flags,
                        SPropProblemArray** problems);
HRESULT CopyObject(const CopyEnds& ends, const SPropTagArray* exclude, ULONG flags,
                   SPropProblemArray** problems);

}  // namespace orv
