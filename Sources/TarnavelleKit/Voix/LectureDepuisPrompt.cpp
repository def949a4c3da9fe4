#include "Voix/LectureDepuisPrompt.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::LectureDepuisPrompt {

std::string ancre(std::string_view ecran) {
  return std::string(Texte::derniers(Texte::rogner(ecran), ancreCaracteres));
}

std::string depuis(std::string_view ecran, const std::optional<std::string>& ancre) {
  if (ancre && !ancre->empty())
    if (const auto debut = ecran.rfind(*ancre); debut != ecran.npos) ecran.remove_prefix(debut + ancre->size());
  return std::string(ecran);
}

}  // namespace tarnavelle::LectureDepuisPrompt
