#include "BoutCarte.hpp"

#include <algorithm>
#include <array>
#include <span>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Voix {
namespace {

int entendre(const void* entree, void*, unsigned long trames, const PaStreamCallbackTimeInfo*,
             PaStreamCallbackFlags, void* moi) {
  auto& bout = *static_cast<BoutCarte*>(moi);
  bout.battements.fetch_add(1, std::memory_order_relaxed);
  const auto* sons = static_cast<const float*>(entree);
  if (!sons) return paContinue;
  const auto voies = static_cast<std::size_t>(bout.voies);
  std::array<float, 256> mono;
  for (std::size_t fait = 0; fait < trames;) {
    const auto n = std::min<std::size_t>(mono.size(), trames - fait);
    for (std::size_t i = 0; i < n; ++i) {
      float somme = 0;
      for (std::size_t v = 0; v < voies; ++v) somme += sons[(fait + i) * voies + v];
      mono[i] = somme / static_cast<float>(voies);
    }
    bout.anneau.ecrire(std::span(mono).first(n));
    fait += n;
  }
  return paContinue;
}

int parler(const void*, void* sortie, unsigned long trames, const PaStreamCallbackTimeInfo*,
           PaStreamCallbackFlags, void* moi) {
  auto& bout = *static_cast<BoutCarte*>(moi);
  bout.battements.fetch_add(1, std::memory_order_relaxed);
  auto* sons = static_cast<float*>(sortie);
  const auto voies = static_cast<std::size_t>(bout.voies);
  std::array<float, 256> mono;
  for (std::size_t fait = 0; fait < trames;) {
    const auto n = std::min<std::size_t>(mono.size(), trames - fait);
    const auto lus = bout.anneau.lire(std::span(mono).first(n));
    std::fill(mono.begin() + static_cast<std::ptrdiff_t>(lus), mono.begin() + static_cast<std::ptrdiff_t>(n),
              0.0F);
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t v = 0; v < voies; ++v) sons[(fait + i) * voies + v] = mono[i];
    fait += n;
  }
  return paContinue;
}

}  // namespace

std::optional<PaDeviceIndex> trouver(Sens sens, const std::string& voulu) {
  const auto convient = [&](PaDeviceIndex i) {
    const PaDeviceInfo* info = Pa_GetDeviceInfo(i);
    return info && (sens == Sens::micro ? info->maxInputChannels : info->maxOutputChannels) > 0;
  };
  if (voulu.empty()) {
    const auto usuel = sens == Sens::micro ? Pa_GetDefaultInputDevice() : Pa_GetDefaultOutputDevice();
    return usuel != paNoDevice && convient(usuel) ? std::optional(usuel) : std::nullopt;
  }
  if (const auto numero = entierDecimal(voulu))
    return *numero >= 0 && *numero < Pa_GetDeviceCount() && convient(static_cast<PaDeviceIndex>(*numero))
               ? std::optional(static_cast<PaDeviceIndex>(*numero))
               : std::nullopt;
  const std::string cherche = Texte::replier(voulu);
  for (PaDeviceIndex i = 0; i < Pa_GetDeviceCount(); ++i)
    if (convient(i) &&
        Texte::replier(Texte::reparer(Pa_GetDeviceInfo(i)->name)).find(cherche) != std::string::npos)
      return i;
  return std::nullopt;
}

std::optional<std::string> BoutCarte::ouvrir() {
  const auto numero = trouver(sens, voulu);
  if (!numero) return "aucun périphérique ne convient";
  const PaDeviceInfo& info = *Pa_GetDeviceInfo(*numero);
  nom = Texte::reparer(info.name);
  const bool ecoute = sens == Sens::micro;
  const double usuelle = info.defaultSampleRate;
  std::string pourquoi = "ses fréquences ne conviennent pas";
  for (const double f : {usuelle, 48000.0, 44100.0, 24000.0, 16000.0, 8000.0}) {
    if (f < 8000 || f > 192000) continue;
    for (const int v : {std::min(2, ecoute ? info.maxInputChannels : info.maxOutputChannels), 1}) {
      const PaStreamParameters forme{
          .device = *numero,
          .channelCount = v,
          .sampleFormat = paFloat32,
          .suggestedLatency = ecoute ? info.defaultLowInputLatency : info.defaultLowOutputLatency,
          .hostApiSpecificStreamInfo = nullptr};
      this->voies = v;
      auto echec =
          Pa_OpenStream(&flux, ecoute ? &forme : nullptr, ecoute ? nullptr : &forme, f,
                        static_cast<unsigned long>(f / 100), paNoFlag, ecoute ? entendre : parler, this);
      if (echec == paNoError && (echec = Pa_StartStream(flux)) == paNoError) {
        ouvertures.fetch_add(1);
        frequence = static_cast<int>(f);
        return std::nullopt;
      }
      pourquoi = Texte::reparer(Pa_GetErrorText(echec));
      if (flux) fermer();
    }
  }
  return pourquoi;
}

void BoutCarte::fermer() {
  frequence = 0;
  if (!flux) return;
  Pa_AbortStream(flux);
  Pa_CloseStream(flux);
  flux = nullptr;
}

}  // namespace tarnavelle::Voix
