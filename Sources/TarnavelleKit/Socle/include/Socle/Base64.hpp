// Base64 in the standard alphabet with padding (RFC 4648, section 4). Pure functions, safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Socle/Octets.hpp"

namespace tarnavelle::Base64 {

std::string coder(std::span<const std::uint8_t> octets);

/// The bytes, or nothing when the text holds anything but whole groups of four characters of the
/// alphabet, the last one padded with "=": no white space, no "-" or "_", no missing padding. The bits
/// that the last group has in excess are ignored, as most decoders do, and not required to be zero.
std::optional<Octets> decoder(std::string_view texte);

}  // namespace tarnavelle::Base64
