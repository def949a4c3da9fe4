// Between the samples of the sound devices (32-bit floats at the device's rate) and the sound of a voice
// session (24 kHz mono PCM, signed 16-bit little-endian). Base64 is the wire's business.
// Samples that are not finite are silence. Pure functions, safe from any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Socle/Octets.hpp"

namespace tarnavelle::RealtimeAudio {

inline constexpr int sampleRate = 24000;  ///< samples a second of a session's sound

/// The most output samples that a sample of input may become: beyond it a rate is a mistake (a device
/// below 375 Hz), and the result empty rather than huge.
inline constexpr double rapportMax = 64;

/// Samples at that rate, as the sound of a session. Empty when the rate is not a positive finite number.
Octets encode(std::span<const float> samples, double inputRate);

/// The samples at another rate, linearly interpolated: floor(n · to / from) of them, the last one held.
/// Empty when a rate is not a positive finite number or their ratio exceeds `rapportMax`.
std::vector<float> resampleLinear(std::span<const float> samples, double from, double to);

/// Clamped to [-1, 1], scaled by 32767 and rounded to the nearest, half away from zero.
Octets floatsToPCM16(std::span<const float> samples);

/// In [-1, 1): each sample divided by 32768. An odd last byte is ignored.
std::vector<float> pcm16ToFloats(std::span<const std::uint8_t> pcm);

}  // namespace tarnavelle::RealtimeAudio
