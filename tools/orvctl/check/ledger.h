// The allocator that a provider is given while it is checked: it knows every buffer, who hangs off whom, and what was
// done to it that must not be done. One for the process, as the functions of the interface carry nothing along.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "orv/orvbase.hpp"

namespace orvctl::check {

enum class Misuse { kFree, kChaining, kBounds };

class Ledger {
 public:
  static Ledger& Get();

  // The three functions as a provider receives them, and an owner over them for our own calls.
  static SCODE STDAPICALLTYPE AllocateRoot(ULONG size, LPVOID* buffer);
  static SCODE STDAPICALLTYPE AllocateMore(ULONG size, LPVOID object, LPVOID* buffer);
  static ULONG STDAPICALLTYPE FreeRoot(LPVOID buffer);
  static orv::sdk::Allocator Functions() { return {AllocateRoot, AllocateMore, FreeRoot}; }

  // Buffers that live, those that hang off others counted too.
  size_t Live();
  // Lets the n-th allocation from now on fail, 0: none. True from then on when it has failed.
  void FailNth(size_t n);
  bool HasFailed();

  // Looks at the guards of all that lives and of what was freed lately, then tells what was found of that kind.
  std::vector<std::string> Misuses(Misuse kind);

  // Whether `size` bytes from the pointer on lie in a living buffer of that root's chain.
  bool IsInChain(const void* root, const void* pointer, size_t size);
  // Bytes from the pointer to the end of its living buffer in that root's chain; 0 for any other pointer.
  size_t RoomInChain(const void* root, const void* pointer);
  bool IsRoot(const void* pointer);

 private:
  struct Block {
    size_t size = 0;
    BYTE* root = nullptr;  // itself for a root
    bool isAlive = true;
    std::vector<BYTE*> chained = {};
  };

  SCODE Allocate(size_t size, BYTE* root, LPVOID* buffer);
  SCODE Chain(ULONG size, BYTE* root, LPVOID* buffer);
  ULONG Free(BYTE* buffer);
  void Retire(BYTE* start, Block& block);
  void Forget();
  void LookAt(const BYTE* start, const Block& block);
  const Block* FindLiving(const void* pointer, const BYTE** start) const;
  void Note(Misuse kind, const std::string& text);

  orv::sdk::Lock lock_;
  std::map<const BYTE*, Block> blocks_;
  std::deque<BYTE*> retired_;
  size_t retiredBytes_ = 0, live_ = 0, countdown_ = 0;
  bool hasFailed_ = false;
  std::vector<std::pair<Misuse, std::string>> misuses_;
};

// What is wrong with values that a provider handed out as one root; empty when all is well. `root` is the buffer that
// was handed out; for values it begins with them.
std::string FindForeignPointer(const void* root, const SPropValue* values, ULONG count);

}  // namespace orvctl::check
