#include "Voix/RealtimeAudio.hpp"

#include <algorithm>
#include <cmath>

namespace tarnavelle::RealtimeAudio {
namespace {

bool frequence(double f) { return std::isfinite(f) && f > 0; }

/// A double, so that no difference of two samples overflows.
double audible(float echantillon) { return std::isfinite(echantillon) ? double{echantillon} : 0; }

}  // namespace

Octets encode(std::span<const float> samples, double inputRate) {
  return floatsToPCM16(resampleLinear(samples, inputRate, sampleRate));
}

std::vector<float> resampleLinear(std::span<const float> samples, double from, double to) {
  if (samples.empty() || !frequence(from) || !frequence(to) || to / from > rapportMax) return {};
  const auto n = static_cast<double>(samples.size());
  std::vector<float> sortie(static_cast<std::size_t>(n * (to / from)));
  const double pas = from / to;
  const std::size_t dernier = samples.size() - 1;
  for (std::size_t i = 0; i < sortie.size(); ++i) {
    const double position = static_cast<double>(i) * pas;
    const std::size_t j = std::min(static_cast<std::size_t>(position), dernier);
    const double avant = audible(samples[j]);
    const double apres = audible(samples[std::min(j + 1, dernier)]);
    sortie[i] = static_cast<float>(avant + (apres - avant) * (position - static_cast<double>(j)));
  }
  return sortie;
}

Octets floatsToPCM16(std::span<const float> samples) {
  Octets pcm(2 * samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double x = std::clamp(audible(samples[i]), -1.0, 1.0) * 32767;
    const auto n = static_cast<std::uint16_t>(static_cast<int>(x + std::copysign(0.5, x)));
    pcm[2 * i] = static_cast<std::uint8_t>(n);
    pcm[2 * i + 1] = static_cast<std::uint8_t>(n >> 8);
  }
  return pcm;
}

std::vector<float> pcm16ToFloats(std::span<const std::uint8_t> pcm) {
  std::vector<float> samples(pcm.size() / 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const auto n = static_cast<std::int16_t>(pcm[2 * i] | pcm[2 * i + 1] << 8);
    samples[i] = static_cast<float>(n) / 32768.0f;
  }
  return samples;
}

}  // namespace tarnavelle::RealtimeAudio
