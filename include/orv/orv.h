/* The whole public interface of the address book, for clients and for providers. */
#ifndef ORV_ORV_H
#define ORV_ORV_H

#include "orv/orvapi.h"
#include "orv/orvcodes.h"
#include "orv/orvflags.h"
#include "orv/orvguids.h"
#include "orv/orvspi.h"
#include "orv/orvtags.h"
#include "orv/orvtypes.h"
#include "orv/orvversion.h"

#endif
