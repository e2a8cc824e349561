// What the readers of all formats have in common.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "formats/contact_io.h"
#include "formats/line_input.h"

namespace formats {

class LineReaderBase : public ContactReader {
 public:
  std::uint64_t line() const final { return first_; }
  const Rejection& rejection() const final { return rejection_; }
  std::uint64_t bytesRead() const final { return input_->bytesRead(); }
  bool hasRecognised() const final { return hasRecognised_; }

 protected:
  explicit LineReaderBase(std::unique_ptr<TextInput> input) : input_(std::move(input)), lines_(*input_) {}

  ReadResult Reject(std::uint64_t line, RejectReason reason, std::string text, std::string name = {}) {
    rejection_ = {line, reason, std::move(text), std::move(name)};
    first_ = line;
    return ReadResult::kRejected;
  }

  const std::unique_ptr<TextInput> input_;
  LineInput lines_;
  std::uint64_t first_ = 0;  // line of the record
  bool hasRecognised_ = false;

 private:
  Rejection rejection_;
};

std::unique_ptr<ContactReader> OpenVCardReader(std::unique_ptr<TextInput> input, const ReadOptions& options);
std::unique_ptr<ContactReader> OpenCsvReader(std::unique_ptr<TextInput> input, const ReadOptions& options,
                                             OpenResult* result);
std::unique_ptr<ContactReader> OpenLdifReader(std::unique_ptr<TextInput> input, const ReadOptions& options);

std::unique_ptr<ContactWriter> CreateVCardWriter(ByteSink& sink, WriteFormat format);
std::unique_ptr<ContactWriter> CreateCsvWriter(ByteSink& sink);
std::unique_ptr<ContactWriter> CreateLdifWriter(ByteSink& sink);

}  // namespace formats
