// The half of the window of a list in which entries of all containers are looked for.
#pragma once

#include "orv/kit/window.hpp"
#include "providers/book/windows/directory.h"

namespace book {

namespace kit = orv::kit;

class SearchPane {
 public:
  SearchPane(kit::Dialog& window, Directory& directory) : window_(window), directory_(directory) {}

  // Once, before anything else; everything is found then.
  void Prepare();
  // True where it is about what is looked for.
  bool OnCommand(int control, int notification);

  bool HasSelected() const;
  std::vector<EntryId> Selected() const;
  void SelectAll() const;
  // The number that is typed in the place of a name; empty where none is.
  std::string TypedNumber() const;
  // What is typed next takes the place of what is typed.
  void TypeOver() const;
  void Clear();

 private:
  void FillContainers();
  void ShowColumns();
  void Search();
  std::vector<FoundEntry> FindAll(const std::wstring& text, std::wstring* fault) const;
  void Show(const std::wstring& text, const std::wstring& fault);
  std::wstring StateOf(size_t count) const;
  // Several containers are looked in.
  bool TellsContainers() const;

  kit::Dialog& window_;
  Directory& directory_;
  std::vector<FoundEntry> found_;
  unsigned searches_ = 0;
};

}  // namespace book
