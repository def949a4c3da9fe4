// What tmux writes to a control-mode client, out of bytes that arrive in pieces cut anywhere: replies between
// "%begin T N F" and the "%end T N F" or "%error T N F" of the same numbers, and notices outside. What stands
// inside a reply is content, whatever it begins with. Memory is bounded, whatever arrives.
// https://github.com/tmux/tmux/wiki/Control-Mode
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tarnavelle::Plateau {

/// The reply to one command.
struct BlocTmux {
  bool reussi = true;
  bool demande =
      false;          ///< to a command that this client wrote, not to the one it was started with or a hook's
  std::string texte;  ///< its lines, each with its line feed
  bool operator==(const BlocTmux&) const = default;
};

/// A line outside any reply, "%sessions-changed", its beginning when it is long.
struct AvisTmux {
  std::string texte;
  bool operator==(const AvisTmux&) const = default;
};

/// What no tmux writes: nothing that follows can be trusted to be in its place.
struct DesordreTmux {
  bool operator==(const DesordreTmux&) const = default;
};

class LecteurControle {
 public:
  using Lecture = std::variant<BlocTmux, AvisTmux, DesordreTmux>;

  static constexpr std::size_t avisMax = 256;               ///< bytes kept of a notice
  static constexpr std::size_t blocMax = 32 * 1024 * 1024;  ///< longest reply; beyond, it is disorder

  void ajouter(std::string_view octets);

  /// What comes next, once enough bytes have come. After disorder, nothing more.
  std::optional<Lecture> suivante();

 private:
  void finirLigne();
  void desordre();

  std::deque<Lecture> lues_;
  std::string ligne_;                  ///< begun, not ended
  std::optional<std::string> marque_;  ///< numbers of the reply that is open
  BlocTmux bloc_;
  bool perdu_ = false;
};

}  // namespace tarnavelle::Plateau
