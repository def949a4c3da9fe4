#include "Hotes/Barriere.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view debutCollage = "\x1b[200~";
constexpr std::string_view finCollage = "\x1b[201~";

}  // namespace

std::size_t Barriere::avancer(std::string_view marque, std::size_t vus, char octet) {
  if (octet == marque[vus]) return vus + 1;
  return octet == marque.front() ? 1 : 0;
}

std::string Barriere::passer(std::string_view octets, bool libre) {
  std::string passent;
  for (const char octet : octets) {
    debut_ = avancer(debutCollage, debut_, octet);
    fin_ = avancer(finCollage, fin_, octet);
    if (debut_ == 1) marquePerdue_ = !libre;
    if (libre && !perdu_ && (debut_ == 0 || !marquePerdue_)) passent += octet;
    if (debut_ == debutCollage.size()) {
      collage_ = true;
      perdu_ = !libre || marquePerdue_;
      debut_ = 0;
    }
    if (fin_ == finCollage.size()) {
      collage_ = perdu_ = false;
      fin_ = 0;
    }
  }
  return passent;
}

}  // namespace tarnavelle::Plateau
