// Hears what becomes of each record while a book is imported or exported.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orv/orvbook.h"
#include "tools/orvctl/contact_files.h"
#include "tools/orvctl/library.h"
#include "tools/orvctl/listing.h"
#include "tools/orvctl/progress.h"

namespace orv::sdk {
template <>
inline constexpr GUID kIidOf<IOrvContactReport> = IID_IOrvContactReport;
}  // namespace orv::sdk

namespace orvctl {

// Records that were rejected, or taken for an earlier one of another name: the first few are told, all are written to a
// file where one is wanted.
class Rejections {
 public:
  // `file` may be empty.
  explicit Rejections(const std::string& file);

  void Add(const std::string& source, ULONGLONG line, const std::string& name, const std::string& reason);
  void AddShared(const std::string& source, ULONGLONG line, const std::string& name,
                 const std::string& reason);
  // Puts the file in its place.
  void Commit();
  ULONGLONG count() const { return count_; }
  ULONGLONG shared() const { return shared_; }
  std::vector<Message> Messages() const;

 private:
  void Write(const std::string& source, const std::string& place, const std::string& name,
             const std::string& reason);

  std::unique_ptr<TargetFile> file_;
  std::vector<Message> told_;
  std::string firstShared_;
  ULONGLONG count_ = 0, shared_ = 0;
};

// What is told of a record with a UID that an earlier one of its file has, under another name.
inline constexpr char kSharesUid[] = "it has the UID of an earlier record with another name";

// Contacts that the format of a file could not hold wholly: how many, and what of them by its names.
class Losses {
 public:
  void Add(const std::vector<std::string>& names);
  // Each name with the number of contacts that lost it.
  Json Fields() const { return fields_; }
  // Nothing where nothing was lost.
  std::vector<Message> Messages(const std::string& format) const;

 private:
  ULONGLONG contacts_ = 0;
  Json fields_ = Json::object();
};

class TransferReport final : public orv::sdk::Object<IOrvContactReport> {
 public:
  // All must outlive it.
  TransferReport(const std::string& source, Rejections& rejections, ProgressBar& bar)
      : source_(source), rejections_(rejections), bar_(bar) {}

  const Losses& losses() const { return losses_; }

  HRESULT STDMETHODCALLTYPE Record(ULONG outcome, ULONGLONG line, LPCWSTR name, LPCWSTR reason) override;
  HRESULT STDMETHODCALLTYPE Progress(ULONGLONG bytes, ULONGLONG records) override;

 private:
  const std::string source_;
  Rejections& rejections_;
  ProgressBar& bar_;
  Losses losses_;
};

// What --strict makes of rejected records.
Message TellOfStrict(ULONGLONG rejected);

}  // namespace orvctl
