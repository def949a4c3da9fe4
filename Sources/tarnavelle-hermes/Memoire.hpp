// What outlives a conversation's program: its session, its thread, and what was still to be said. One private
// file, written whole or not at all. A plain value.
#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

namespace tarnavelle {

struct Memoire {
  static constexpr std::size_t proposMax = 200;                    ///< messages of the thread
  static constexpr std::size_t texteMax = std::size_t{64} * 1024;  ///< bytes kept of one
  static constexpr std::size_t fichierMax = std::size_t{32} * 1024 * 1024;

  struct Propos {
    enum class De { vous, hermes, note } de = De::note;
    std::string texte;
    bool operator==(const Propos&) const = default;
  };

  std::string session{};  ///< the gateway's; empty before it told one
  std::deque<Propos> fil{};
  std::string enCours{};              ///< of the turn under way, its answer not yet whole
  bool parti = false;                 ///< that one may have been received
  std::vector<std::string> enFile{};  ///< not sent yet

  bool operator==(const Memoire&) const = default;

  void ajouter(Propos propos);

  /// An empty one when the file tells nothing usable.
  static Memoire lire(const std::filesystem::path& fichier);
  bool ecrire(const std::filesystem::path& fichier) const;

  /// Who writes: a conversation, for as long as it lasts, or somebody who adds to it, one after the other.
  enum class Prise { seule, breve };
  /// Takes the right to write that file until the process ends. False when a conversation has it.
  static bool reserver(const std::filesystem::path& fichier, Prise prise);

  /// Its file in that folder, by the place that the conversation is led with.
  static std::filesystem::path chemin(const std::filesystem::path& dossier, const std::string& lieu);
};

}  // namespace tarnavelle
