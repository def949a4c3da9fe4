// The agents of the board that live on other machines: how one is started or joined again over there, what is
// read of them, and the machines themselves. Safe from any thread.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Hotes/LienSSH.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

namespace interne {
class SuiviHote;
}

struct ReglagesLointains {
  ReglagesSSH ssh;
  std::filesystem::path personnel;  ///< the home folder
  std::string plateau;              ///< our own program's path
  std::filesystem::path dossier;    ///< where each agent gets a private folder of its own
  std::function<std::filesystem::path(std::string_view cle)> journal;  ///< the log of its hooks, here
  std::function<int()> port;                                           ///< the door's, once it is open
  /// The token of an agent by its key; nothing when it gets none.
  std::function<std::optional<std::string>(std::string_view cle)> jeton;
};

class Lointains final : public Lointain {
 public:
  explicit Lointains(ReglagesLointains reglages);
  ~Lointains() override;
  Lointains(const Lointains&) = delete;
  Lointains& operator=(const Lointains&) = delete;

  /// How an agent is started over there, or its session joined again, in a terminal here: asked over there
  /// first. `cli`: its program. Or in French why it cannot be: a sentence.
  Resultat<Depart, std::string> embarquer(const Embarquement& e, const AgentCLI& cli);

  /// Whether that port of a machine's loopback leads to the door here.
  bool mene(std::uint16_t port);

  Resultat<std::vector<Session>, std::string> sessions(const std::string& hote) override;
  std::optional<std::vector<Session>> vues(const std::string& hote) override;
  void suivre(const std::string& cle, const std::string& hote, const std::string& session) override;
  void oublier(const std::string& cle) override;
  void guetter(const std::string& cle) override;
  void laisser(const std::string& cle) override;
  std::optional<std::string> sansPorte(const std::string& cle) override;
  std::optional<std::string> derniereReponse(const std::string& hote, const std::string& transcript) override;
  std::optional<std::vector<std::string>> historique(const std::string& hote, const std::string& session,
                                                     int lignes) override;
  std::vector<Hote> hotes(bool sonder) override;

 private:
  /// What makes the agent able to call the door, written over there: the words for its launch.
  Resultat<std::vector<std::string>, std::string> donnerPorte(const Embarquement& e, const AgentCLI& cli,
                                                              const std::string& pont, int& port);
  std::filesystem::path fiche(const std::string& cle) const;
  std::shared_ptr<interne::SuiviHote> de(const std::string& hote);
  std::shared_ptr<interne::SuiviHote> deLAgent(const std::string& cle);

  const ReglagesLointains reglages_;
  std::mutex mutex_;  ///< guards what follows
  std::map<std::string, std::shared_ptr<interne::SuiviHote>> hotes_;
  std::map<std::string, std::string> agents_;     ///< the host of each that is followed
  std::map<std::string, std::string> sansPorte_;  ///< why, of those that were started and cannot call
};

}  // namespace tarnavelle::Plateau
