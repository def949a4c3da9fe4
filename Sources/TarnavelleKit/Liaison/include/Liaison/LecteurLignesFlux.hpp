// Lines of text out of bytes that arrive in pieces cut anywhere. A line ends with LF, CR or CRLF, as in a
// stream of server-sent events; a byte order mark at the start is passed over. Time is linear and memory
// bounded, whatever arrives. What a line says is its reader's business. One thread at a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarnavelle {

class LecteurLignesFlux {
 public:
  /// Longest line, in bytes, unless the reader is told otherwise.
  static constexpr std::size_t ligneMax = 8 * 1024 * 1024;

  explicit LecteurLignesFlux(std::size_t maximum = ligneMax) : maximum_(maximum) {}

  /// A piece that has arrived, once `suivante` has given all the lines of the one before. Not copied: it
  /// must stay until they are given.
  void ajouter(std::string_view morceau);

  /// The next line, without its end, invalid bytes replaced by U+FFFD; a view valid until the next call.
  /// Nothing: another piece is needed, or `tropLongue` has something to say.
  std::optional<std::string_view> suivante();

  /// After the last piece: the line that nothing ended.
  std::optional<std::string_view> derniere();

  /// Whether the next line goes beyond the limit, told once: it is passed over, and the others follow.
  bool tropLongue() { return std::exchange(tropLongue_, false); }

 private:
  /// The first byte from `fin` on, or where it would stand: searched again only once it is passed.
  const char* chercher(const char*& connu, char octet);
  /// The line as it is given out.
  std::string_view rendre(std::string_view ligne);
  /// Lets go of the line given last.
  void oublier();

  std::size_t maximum_;
  std::string_view morceau_;      ///< not given out yet
  const char* saut_ = nullptr;    ///< the next LF of the piece
  const char* retour_ = nullptr;  ///< the next CR of the piece
  std::string debut_;             ///< of a line whose end has not come
  std::string reparee_;
  bool rendu_ = false;        ///< a line has been given since
  bool apresRetour_ = false;  ///< a LF would be the end of that CR's line
  bool premiere_ = true;
  bool tropLongue_ = false;
  bool sautee_ = false;  ///< the line that has begun is too long
};

}  // namespace tarnavelle
