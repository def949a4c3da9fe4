// The few keys of a conversation, from the bytes of a raw terminal. Where the terminal tells when a key is let
// go (https://sw.kovidgoyal.net/kitty/keyboard-protocol/), it is asked to, and then does. One thread at a time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Voix {

enum class Touche { espace, espaceLachee, echap, quitter, redessiner };

class Touches {
 public:
  /// Asks the terminal what it can tell.
  static constexpr std::string_view question = "\033[?u";
  /// To be sent once `saitLacher`, and when leaving.
  static constexpr std::string_view demande = "\033[>11u";
  static constexpr std::string_view adieu = "\033[<u";

  std::vector<Touche> lire(std::string_view octets);
  /// Nothing has followed for a moment: an Esc was a key of its own.
  std::vector<Touche> calme();
  bool enSuspens() const { return !reste_.empty(); }

  /// The terminal has answered that it can tell releases.
  bool saitLacher() const { return saitLacher_; }

 private:
  void sequence(std::string_view corps, char fin, std::vector<Touche>& touches);
  static void caractere(int point, bool controle, int genre, std::vector<Touche>& touches);

  std::string reste_;
  bool saitLacher_ = false;
};

}  // namespace tarnavelle::Voix
