#include <algorithm>

#include "Voix/RealtimeAudio.hpp"
#include "VoixEnCoursInterne.hpp"

namespace tarnavelle {

void VoixEnCoursInterne::donner(std::string_view item, std::int64_t echantillons, Secondes maintenant) {
  if (parts_.empty() || parts_.back().item != item) parts_.push_back({std::string(item), 0});
  if (parts_.size() > partsMax) parts_.pop_front();
  parts_.back().echantillons += fenetre_.planifier(echantillons, maintenant, RealtimeAudio::sampleRate);
}

std::vector<VoixEnCoursInterne::Coupe> VoixEnCoursInterne::couper(std::optional<std::int64_t> perdus,
                                                                  Secondes maintenant) {
  const double reste = std::max(fenetre_.restantSecondes(maintenant).count(), 0.0);
  std::int64_t aOter = perdus.value_or(static_cast<std::int64_t>(reste * RealtimeAudio::sampleRate));
  std::vector<Coupe> coupes;
  for (auto part = parts_.rbegin(); part != parts_.rend() && aOter > 0; ++part) {
    const std::int64_t otes = std::min(aOter, part->echantillons);
    aOter -= otes;
    if (otes > 0 && !part->item.empty())
      coupes.push_back({part->item, std::chrono::milliseconds((part->echantillons - otes) * 1000 /
                                                              RealtimeAudio::sampleRate)});
  }
  fenetre_.vider();
  parts_.clear();
  return coupes;
}

}  // namespace tarnavelle
