// What the user did in a list of a window, to be taken back step by step.
#pragma once

#include <vector>

#include "providers/book/windows/contact_fields.h"

namespace book {

class Steps {
 public:
  // Of the field of the contact that the list shows.
  Steps(formats::Contact& contact, Field field) : contact_(contact), field_(field) {}

  // Before a step.
  void Remember() { former_.push_back(contact_); }
  void Forget() { former_.clear(); }
  // False where there is none left.
  bool TakeBack() {
    if (former_.empty()) return false;
    Copy(former_.back(), field_, &contact_);
    former_.pop_back();
    return true;
  }

 private:
  formats::Contact& contact_;
  const Field field_;
  std::vector<formats::Contact> former_;
};

}  // namespace book
