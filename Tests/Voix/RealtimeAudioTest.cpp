#include "Voix/RealtimeAudio.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarnavelle {
namespace {

using Echantillons = std::vector<float>;
constexpr float plusGrand = std::numeric_limits<float>::max();

TEST(RealtimeAudio, Reechantillonne) {
  const std::tuple<Echantillons, double, double, Echantillons> cas[] = {
      {{0, 1, 2, 3, 4}, 48000, 24000, {0, 2}},
      {{0, 1, 0}, 8000, 24000, {0, 1 / 3.f, 2 / 3.f, 1, 2 / 3.f, 1 / 3.f, 0, 0, 0}},
      {{1, HUGE_VALF, std::nanf(""), 1}, 1, 2, {1, .5f, 0, 0, 0, .5f, 1, 1}},
      {{plusGrand, -plusGrand}, 1, 2, {plusGrand, 0, -plusGrand, -plusGrand}},
      {{1}, 1, RealtimeAudio::rapportMax, Echantillons(64, 1)},
      {{1}, 1, RealtimeAudio::rapportMax + 1, {}},
      {{}, 48000, 24000, {}},
      {{1, 1}, -48000, -24000, {}},
      {{1}, std::nan(""), 24000, {}},
  };
  for (const auto& [entree, de, vers, attendus] : cas)
    EXPECT_EQ(RealtimeAudio::resampleLinear(entree, de, vers), attendus) << de << " → " << vers;
  EXPECT_EQ(RealtimeAudio::resampleLinear(Echantillons(44099), 44100, 24000).size(), 23999u);
}

TEST(RealtimeAudio, ConvertitEnPCM) {
  const Echantillons entree{
      1.5f, -plusGrand, .5f, std::nanf(""), -258.f / 32767, -1.4999f / 32767, .49999997f / 32767};
  EXPECT_EQ(RealtimeAudio::floatsToPCM16(entree),
            (Octets{0xFF, 0x7F, 0x01, 0x80, 0x00, 0x40, 0, 0, 0xFE, 0xFE, 0xFF, 0xFF, 0, 0}));
  EXPECT_EQ(RealtimeAudio::encode(Echantillons{0.5f, -1, 2, 0.25f, -0.5f}, 48000),
            (Octets{0x00, 0x40, 0xFF, 0x7F}));
  const Octets pcm{0x00, 0x80, 0xFF, 0x7F, 0x00, 0x40, 0xFF, 0xFF, 0x77};
  EXPECT_EQ(RealtimeAudio::pcm16ToFloats(pcm), (Echantillons{-1, 32767 / 32768.f, 0.5f, -1 / 32768.f}));
}

}  // namespace
}  // namespace tarnavelle
