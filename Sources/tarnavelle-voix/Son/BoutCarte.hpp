// One end of the sound on a device: what its callback and the thread that moves the sound share.
#pragma once

#include <portaudio.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Son/AnneauSon.hpp"

namespace tarnavelle::Voix {

enum class Sens { micro, hautParleur };

struct BoutCarte {
  explicit BoutCarte(Sens s, std::string v) : sens(s), voulu(std::move(v)) {}

  const Sens sens;
  const std::string voulu;                 ///< number or part of a name; empty: the usual one
  AnneauSon anneau{std::size_t{1} << 17};  ///< of one channel, at the device's rate: 0.7 s at 192 kHz

  std::atomic<int> frequence = 0;  ///< 0 while there is no device
  std::atomic<std::uint64_t> ouvertures = 0;
  std::atomic<std::uint64_t> battements = 0;  ///< of the callback

  // For the thread that watches.
  PaStream* flux = nullptr;
  int voies = 1;  ///< set before the callback can run
  std::string nom{};

  /// Opens the device and starts it; why not otherwise, as a clause.
  std::optional<std::string> ouvrir();
  void fermer();
};

/// The device that is meant; nothing when there is none.
std::optional<PaDeviceIndex> trouver(Sens sens, const std::string& voulu);

}  // namespace tarnavelle::Voix
