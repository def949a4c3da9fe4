// The fixed catalogue of the agent programs that the cockpit runs in its terminals: how one is named in
// a phrase, where its executable is looked for, and a cache that answers whether it is installed.
// What is added to a launch is InjectionPorte's business. The catalogue is immutable, the cache guards
// itself: everything here is safe from any thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle {

enum class TeinteLanceur { accent, forge, alerte, ok };

struct AgentCLI {
  std::string id;                            ///< stable, lower case; used in verbs and settings
  std::string titre;                         ///< display name
  std::string editeur;                       ///< who makes the program
  std::vector<std::string> cheminsBinaires;  ///< candidates in order; a leading "~" is the home folder
  std::vector<std::string> arguments;        ///< always passed at launch
  std::string symbole;                       ///< name of the launcher's icon
  TeinteLanceur teinte = TeinteLanceur::accent;
  std::vector<std::string> alias;  ///< lower-case names that designate the program in a phrase
  std::string prefixeSession;      ///< starts the names of its terminal sessions

  bool operator==(const AgentCLI&) const = default;

  static const AgentCLI& claude();
  static const AgentCLI& codex();
  static const AgentCLI& grok();
  static const AgentCLI& gemini();
  static const AgentCLI& hermes();

  /// The catalogue, in its fixed order.
  static const std::vector<AgentCLI>& tous();
  static const std::vector<AgentCLI>& allCases() { return tous(); }

  /// The entry of exactly that identifier, or null.
  static const AgentCLI* parId(std::string_view id);

  /// The entry that the phrase names by one of its aliases, as whole words after `plier`; the longest
  /// alias wins, then the first of the catalogue. When it names none so, any other sign of it counts as a
  /// space. Null when it names none at all.
  static const AgentCLI* depuisPhrase(std::string_view phrase);

  /// The form under which phrases are compared: lower case without accents, apostrophes and dashes as
  /// spaces, punctuation left out, words one space apart.
  static std::string plier(std::string_view texte);

  std::string sousTitrePalette() const;

  /// Where executables are looked for.
  struct Machine {
    std::string dossierPersonnel;
    std::function<bool(const std::filesystem::path&)> estExecutable;

    /// This machine. The first call finds the home folder, where HOME is unset in the user database.
    static const Machine& reelle();
  };

  /// The first candidate that is an executable file. The PATH does not count, nothing is run.
  std::optional<std::filesystem::path> binaire(const Machine& machine = Machine::reelle()) const;

  /// Whether `binaire` finds one now.
  bool disponibleSansCache(const Machine& machine = Machine::reelle()) const;

  /// The same through the shared cache.
  bool disponible() const;
};

/// Whether programs are installed, remembered for a few seconds each.
class CacheDisponibiliteCLI {
 public:
  using Instant = std::chrono::steady_clock::time_point;
  using Sonde = std::function<bool(const AgentCLI&)>;
  using Horloge = std::function<Instant()>;

  /// An answer of that age is asked for again.
  static constexpr std::chrono::duration<double> ttl{5.0};

  static CacheDisponibiliteCLI& partage();

  /// Both are called without the lock held, from any thread.
  CacheDisponibiliteCLI(Sonde sonde, Horloge horloge);

  bool valeur(const AgentCLI& pour);

  /// Forgets one program, or all of them: the next question asks the disk at once.
  void oublier(const AgentCLI& cli);
  void oublier();

 private:
  struct Vue {
    bool valeur;
    Instant quand;
  };

  const Sonde sonde_;
  const Horloge horloge_;
  std::mutex lock_;
  std::map<std::string, Vue, std::less<>> vues_;  ///< by identifier
};

}  // namespace tarnavelle

/// Over every field, as equality.
template <>
struct std::hash<tarnavelle::AgentCLI> {
  std::size_t operator()(const tarnavelle::AgentCLI& cli) const noexcept;
};
