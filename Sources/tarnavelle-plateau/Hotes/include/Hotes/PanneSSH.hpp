// Why ssh did not do it, read from what it says, and what the operator can do about it. Pure functions.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

struct PanneSSH {
  enum class Cause {
    nom,            ///< no name of a host
    sansSSH,        ///< there is no ssh here
    configuration,  ///< ssh refuses its configuration
    inconnu,        ///< no machine of that name
    injoignable,    ///< nobody answers there
    passage,        ///< what leads there, another machine or a program, did not
    horsDelai,      ///< no answer in time
    cleChangee,     ///< the host's key is not the one that is known
    cleInconnue,    ///< the host's key is not known
    refuse,         ///< it takes none of our keys
    protocole,      ///< the two ends have no algorithm in common
    coupe,          ///< the link was cut
    pasDeShell,     ///< the login shell over there ran nothing
    autre,
  };
  Cause cause = Cause::autre;
  std::string phrase{};  ///< in French, for the operator: whole sentences
  bool operator==(const PanneSSH&) const = default;

  /// What ssh said on its error stream when it ended with 255.
  static PanneSSH lire(std::string_view hote, std::string_view dit);
  static PanneSSH de(Cause cause, std::string_view hote, std::string_view detail = {});

  /// Between two tries when nobody asks for one: where a person has something to do first, each of many in vain
  /// would have some machines shut their door to this one.
  static constexpr std::chrono::seconds sansEspoir{300};
  /// Whether trying again, with nothing changed by a person, may succeed.
  bool passagere() const;
};

}  // namespace tarnavelle::Plateau
