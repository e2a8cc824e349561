// Kinds of numbers and places of addresses, as drop-downs and lists show them.
#pragma once

#include <span>
#include <string>

#include "formats/contact.h"
#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

// The texts in their order; a kind's place in it stands for the kind.
std::span<const UINT> NumberKinds();
int KindOf(const formats::ContactNumber& number);
// What the kind does not say of the number stays.
void SetKind(formats::ContactNumber* number, int kind);
bool IsFaxKind(int kind);

std::span<const UINT> Places();
int IndexOf(formats::Place place);
formats::Place PlaceAt(int index);

// In one line; of an address with its lines in order.
std::wstring LineOf(const kit::Language& language, const formats::ContactNumber& number);
std::wstring LineOf(const kit::Language& language, const formats::ContactEmail& email);
std::wstring LineOf(const kit::Language& language, const formats::ContactAddress& address);
std::wstring LineOf(const kit::Language& language, const formats::ContactMember& member);
std::wstring LineOf(const kit::Language& language, const std::string& line);

}  // namespace book
