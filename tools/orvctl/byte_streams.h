// Sources and sinks of bytes as the streams that whole books are read from and written to.
#pragma once

#include <objidl.h>

#include <memory>

#include "formats/contact_io.h"
#include "tools/orvctl/library.h"

namespace orvctl {

// A stream that can only be read, from its beginning to its end.
ComPtr<IStream> StreamFrom(std::unique_ptr<formats::ByteSource> source);
// A stream that can only be written; the sink must outlive it.
ComPtr<IStream> StreamInto(formats::ByteSink& sink);

// Standard input, and standard output whatever is behind it.
std::unique_ptr<formats::ByteSource> StandardInput();
std::unique_ptr<formats::ByteSink> StandardOutput();

}  // namespace orvctl
