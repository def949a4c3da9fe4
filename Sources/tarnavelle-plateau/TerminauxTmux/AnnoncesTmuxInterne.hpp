// Tells an observer what happens in the terminals, on a thread of its own, so that he may ask the ground back.
// What came and went is told from one listing to the next: whatever rang, the listing is the truth.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

class AnnoncesTmux {
 public:
  /// What the ground lends.
  struct Moyens {
    std::function<Ou<std::vector<Terminal>>()> lister;       ///< with the number of ended programs too
    std::function<void(const std::set<pid_t>&)> surveiller;  ///< `change` at the end of each
    std::function<void()> recolter;                          ///< has the ended ones looked for
  };
  explicit AnnoncesTmux(Moyens moyens);
  ~AnnoncesTmux();
  /// Nothing is told any more, nor anything of the ground used, once this returns.
  void arreter();
  AnnoncesTmux(const AnnoncesTmux&) = delete;
  AnnoncesTmux& operator=(const AnnoncesTmux&) = delete;

  /// With nullptr: returns once nobody is being told anything, unless asked by who is.
  void observer(Observateur* observateur);

  /// A terminal as it is told: without the number of a program that has ended.
  static Terminal commeOnLeDit(Terminal terminal);

  void change();
  void ecrit(const std::string& id);
  void perdu();

 private:
  void courir();
  void comparer(Observateur& observateur);

  const Moyens moyens_;
  std::mutex verrou_;
  std::condition_variable travail_;
  std::condition_variable repos_;
  Observateur* observateur_ = nullptr;
  std::set<IdTerminal> ecrits_;
  bool change_ = false;
  bool perdu_ = false;
  bool oublier_ = false;
  bool occupe_ = false;
  bool arret_ = false;
  int relances_ = 0;                       ///< the thread's own: looks still due until all ends are known
  std::map<IdTerminal, Terminal> connus_;  ///< the thread's own
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
