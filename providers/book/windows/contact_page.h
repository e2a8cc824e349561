// A page of the window of a contact: shows a part of it and puts what the user does into it at once.
#pragma once

#include "formats/contact.h"
#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

class ContactPage {
 public:
  ContactPage(kit::Dialog& window, formats::Contact& contact) : window_(window), contact_(contact) {}
  virtual ~ContactPage() = default;
  ContactPage(const ContactPage&) = delete;
  ContactPage& operator=(const ContactPage&) = delete;

  // Once, before anything else, with what the controls need.
  virtual void Prepare() {}
  // Shows the contact as it is now.
  virtual void Fill() = 0;
  virtual void Lock() = 0;  // nothing can be changed
  // True where it is about a control of the page.
  virtual bool OnCommand(int, int) { return false; }
  virtual void OnNotify(const NMHDR&) {}
  virtual bool OnKey(int, UINT) { return false; }
  // What is wrong with what is typed: a number in the string table, 0 where nothing is.
  virtual UINT Fault() const { return 0; }
  // Takes what is typed and not in the contact yet.
  virtual void TakeTyped() {}
  virtual bool HasTyped() const { return false; }

 protected:
  kit::Dialog& window_;
  formats::Contact& contact_;
  bool isFilling_ = false;  // what controls tell meanwhile is no doing of the user's
};

// While it lives, the page fills its controls.
class Filling {
 public:
  explicit Filling(bool& isFilling) : isFilling_(isFilling), before_(isFilling) { isFilling = true; }
  ~Filling() { isFilling_ = before_; }
  Filling(const Filling&) = delete;
  Filling& operator=(const Filling&) = delete;

 private:
  bool& isFilling_;
  const bool before_;
};

}  // namespace book
