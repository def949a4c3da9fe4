#include "Voix/RealtimeAudio.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarnavelle {
namespace {

using Echantillons = std::vector<float>;
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infini = std::numeric_limits<float>::infinity();
constexpr float plusGrand = std::numeric_limits<float>::max();

TEST(RealtimeAudio, Reechantillonne) {
  struct {
    Echantillons entree;
    double de, vers;
    Echantillons attendus;
  } const cas[] = {
      {{0, 1, 2, 3, 4}, 48000, 24000, {0, 2}},
      {{0, 3}, 16000, 24000, {0, 2, 3}},
      {{0, 1, 0}, 8000, 24000, {0, 1 / 3.f, 2 / 3.f, 1, 2 / 3.f, 1 / 3.f, 0, 0, 0}},
      {{1, nan, 1}, 24000, 24000, {1, 0, 1}},
      {{1, infini, -infini, 1}, 1, 2, {1, .5f, 0, 0, 0, .5f, 1, 1}},
      {{plusGrand, -plusGrand}, 1, 2, {plusGrand, 0, -plusGrand, -plusGrand}},
      {{1}, 1, RealtimeAudio::rapportMax, Echantillons(64, 1)},
      {{1}, 1, RealtimeAudio::rapportMax + 1, {}},
      {{1}, 1e-300, 1e300, {}},
      {{1, 1}, 1e300, 1e-300, {}},
      {{}, 48000, 24000, {}},
      {{1}, 0, 24000, {}},
      {{1}, -48000, -24000, {}},
      {{1}, 48000, 0, {}},
      {{1}, std::nan(""), 24000, {}},
      {{1}, HUGE_VAL, 24000, {}},
      {{1}, 24000, HUGE_VAL, {}},
  };
  for (const auto& c : cas) {
    const auto sortie = RealtimeAudio::resampleLinear(c.entree, c.de, c.vers);
    ASSERT_EQ(sortie.size(), c.attendus.size()) << c.de << " → " << c.vers;
    for (std::size_t i = 0; i < sortie.size(); ++i)
      EXPECT_FLOAT_EQ(sortie[i], c.attendus[i]) << c.de << " → " << c.vers << ", " << i;
  }
  EXPECT_EQ(RealtimeAudio::resampleLinear(Echantillons(44100), 44100, 24000).size(), 24000u);
  EXPECT_EQ(RealtimeAudio::resampleLinear(Echantillons(44099), 44100, 24000).size(), 23999u);
}

TEST(RealtimeAudio, ConvertitEnPCM) {
  struct {
    float echantillon;
    int attendu;
  } const cas[] = {
      {1.5f, 32767},
      {-1, -32767},
      {plusGrand, 32767},
      {-1.0001f, -32767},
      {0.5f, 16384},
      {-0.5f, -16384},
      {1.4999f / 32767, 1},
      {-1.4999f / 32767, -1},
      {nan, 0},
      {infini, 0},
      {-infini, 0},
      {-0.f, 0},
      {0.49999997f / 32767, 0},
      {-258.f / 32767, -258},
  };
  for (const auto& c : cas) {
    const auto n = static_cast<std::uint16_t>(c.attendu);
    EXPECT_EQ(RealtimeAudio::floatsToPCM16({&c.echantillon, 1}),
              (Octets{static_cast<std::uint8_t>(n), static_cast<std::uint8_t>(n >> 8)}))
        << c.echantillon;
  }
  const Echantillons capture{0.5f, -1, 2, 0.25f, -0.5f};
  EXPECT_EQ(RealtimeAudio::encode(capture, 48000), (Octets{0x00, 0x40, 0xFF, 0x7F}));
}

TEST(RealtimeAudio, RendLesEchantillons) {
  const Octets pcm{0x00, 0x80, 0xFF, 0x7F, 0x00, 0x40, 0xFF, 0xFF, 0x77};
  EXPECT_EQ(RealtimeAudio::pcm16ToFloats(pcm), (Echantillons{-1, 32767 / 32768.f, 0.5f, -1 / 32768.f}));
}

}  // namespace
}  // namespace tarnavelle
