// Waking the gateway on the remote machine: one decision per observation. Probing, looking for the process,
// launching it and looping until a decision ends are the cockpit's business. Safe from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tarnavelle {

/// What the remote agent's environment says of its gateway.
struct LectureEnvHermes {
  bool serveurActif = false;
  std::optional<std::string> cle = {};
  std::optional<std::uint16_t> portDistant = {};
  std::optional<std::string> modele = {};
  bool aLuLeFichier = false;

  bool operator==(const LectureEnvHermes&) const = default;
};

namespace ReveilGateway {

inline constexpr int essaisSante = 6;                        ///< health probes after a launch
inline constexpr std::chrono::milliseconds pauseSante{500};  ///< between two of them

/// Why the gateway cannot be reached.
struct EchecGateway {
  /// The link to the host failed.
  struct liaison {
    std::string hote;
    bool operator==(const liaison&) const = default;
  };
  /// The gateway's program is not installed.
  struct binaireAbsent {
    std::string texte;  ///< the error text, or the host's name
    bool operator==(const binaireAbsent&) const = default;
  };
  /// The remote environment does not enable the API server.
  struct serveurDesactive {
    bool operator==(const serveurDesactive&) const = default;
  };
  /// No gateway key is configured.
  struct cleIntrouvable {
    bool operator==(const cleIntrouvable&) const = default;
  };
  /// The gateway refused the key.
  struct refusee {
    bool operator==(const refusee&) const = default;
  };
  /// The gateway runs but never answers its health probe.
  struct tourneMaisMuette {
    bool operator==(const tourneMaisMuette&) const = default;
  };

  std::variant<liaison, binaireAbsent, serveurDesactive, cleIntrouvable, refusee, tourneMaisMuette> cas;

  bool operator==(const EchecGateway&) const = default;
};

/// The next step.
struct Geste {
  /// Probe health that many times, `pauseSante` apart; without an answer, it is `tourneMaisMuette`.
  struct attendreSante {
    int essais = 0;
    bool operator==(const attendreSante&) const = default;
  };
  struct abandonner {
    EchecGateway echec;
    bool operator==(const abandonner&) const = default;
  };
  /// The gateway is up.
  struct rienAFaire {
    bool operator==(const rienAFaire&) const = default;
  };
  struct sonderProcessus {
    bool operator==(const sonderProcessus&) const = default;
  };
  struct lancer {
    bool operator==(const lancer&) const = default;
  };

  std::variant<attendreSante, abandonner, rienAFaire, sonderProcessus, lancer> cas;

  bool operator==(const Geste&) const = default;
};

/// Nothing: the environment is no obstacle.
std::optional<EchecGateway> apresEnv(const LectureEnvHermes& lecture);

/// `code`: the probe's HTTP status; nothing when it did not complete.
Geste apresSante(std::optional<int> code);

/// `ec`: the command's exit status; `aSentinelle`: whether its output bore the expected mark.
Geste apresPgrep(std::optional<std::int32_t> ec, bool aSentinelle, std::string_view hote);

struct Lancement {
  std::optional<std::int32_t> ec;  ///< exit status
  std::string_view err;            ///< error output
  std::string_view hote;
};
Geste apresLancement(const Lancement& lancement);

}  // namespace ReveilGateway
}  // namespace tarnavelle
