#include "tools/orvctl/trace.h"

#include <memory>

#include "diag/trace.h"

namespace orvctl {
namespace {

std::unique_ptr<const diag::Trace> current;

diag::TraceTarget TargetOf(const std::string& name) {
  if (name == "com1") return diag::TraceTarget::kSerialPort;
  return name == "debugger" ? diag::TraceTarget::kDebugger : diag::TraceTarget::kFile;
}

}  // namespace

bool StartTrace(const std::string& target) {
  current = std::make_unique<const diag::Trace>(TargetOf(target));
  if (!current->isOpen()) current.reset();
  return current != nullptr;
}

void TraceText(const std::string& text) {
  if (current) current->Write(text);
}

void TraceResult(const std::string& doing, HRESULT result) {
  if (current) current->WriteResult(doing, static_cast<uint32_t>(result));
}

}  // namespace orvctl
