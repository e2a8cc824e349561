// Contact files of the command line: sources, targets and formats by name.
#pragma once

#include <memory>
#include <string>

#include "formats/contact_io.h"
#include "formats/file_stream.h"
#include "tools/orvctl/command_line.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/file_formats.h"

namespace orvctl {

// "-" is standard input. Throws where it cannot be opened.
std::unique_ptr<formats::ByteSource> OpenSource(const std::string& file);
// Throws where nothing can be written under that name: a folder that is there, and no folder or protected file under the
// name itself.
void RequirePlace(const std::string& file);
// The lines "column=field" of --map; empty without it. Throws for one whose field there is not.
std::string MapOf(const Options& options);
// How contact files are read, as the command line says.
formats::ReadOptions ReadingOf(const Options& options, const std::string& map);
// Whether both name one file; standard input and output are none.
bool AreOneFile(const std::string& one, const std::string& other);
// The bytes that can be told beforehand; 0 where nobody knows.
ULONGLONG SizeOf(const std::string& file);

// What is written appears under its name once all of it is there; "-" is standard output.
class TargetFile {
 public:
  // `isForetold`: nothing is written; what would keep it from being written is told all the same.
  explicit TargetFile(std::string file, bool isForetold = false);

  bool IsStandardOutput() const { return name_ == "-"; }
  formats::ByteSink& sink();
  // Puts the file in its place.
  void Commit();
  // For a writing that failed; kNoSpace where the disk is full.
  [[noreturn]] void Fail() const;

 private:
  const std::string name_;
  std::unique_ptr<formats::ByteSink> output_;
  std::unique_ptr<formats::FileSink> file_;
};

}  // namespace orvctl
