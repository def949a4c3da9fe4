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
      {{1, 1}, 1e300, 1e-300, {}},
      {{}, 48000, 24000, {}},
      {{1, 1}, -48000, -24000, {}},
      {{1}, std::nan(""), 24000, {}},
  };
  for (const auto& [entree, de, vers, attendus] : cas) {
    const auto sortie = RealtimeAudio::resampleLinear(entree, de, vers);
    ASSERT_EQ(sortie.size(), attendus.size()) << de << " → " << vers;
    for (std::size_t i = 0; i < sortie.size(); ++i)
      EXPECT_FLOAT_EQ(sortie[i], attendus[i]) << de << " → " << vers << ", " << i;
  }
  EXPECT_EQ(RealtimeAudio::resampleLinear(Echantillons(44099), 44100, 24000).size(), 23999u);
}

TEST(RealtimeAudio, ConvertitEnPCM) {
  const std::pair<float, int> cas[] = {
      {1.5f, 32767},      {-plusGrand, -32767},   {0.5f, 16384},
      {std::nanf(""), 0}, {-HUGE_VALF, 0},        {-258.f / 32767, -258},
      {-0.f, 0},          {-1.4999f / 32767, -1}, {0.49999997f / 32767, 0},
  };
  for (const auto& [echantillon, attendu] : cas) {
    const auto pcm = RealtimeAudio::floatsToPCM16({&echantillon, 1});
    EXPECT_EQ(static_cast<std::int16_t>(pcm.at(0) | pcm.at(1) << 8), attendu) << echantillon;
  }
  EXPECT_EQ(RealtimeAudio::encode(Echantillons{0.5f, -1, 2, 0.25f, -0.5f}, 48000),
            (Octets{0x00, 0x40, 0xFF, 0x7F}));
  const Octets pcm{0x00, 0x80, 0xFF, 0x7F, 0x00, 0x40, 0xFF, 0xFF, 0x77};
  EXPECT_EQ(RealtimeAudio::pcm16ToFloats(pcm), (Echantillons{-1, 32767 / 32768.f, 0.5f, -1 / 32768.f}));
}

}  // namespace
}  // namespace tarnavelle
