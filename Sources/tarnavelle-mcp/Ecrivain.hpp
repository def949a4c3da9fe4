// The lines that leave, each in one write, whoever writes them. A write that fails is forgotten. From any
// thread.
#pragma once

#include <mutex>
#include <string>
#include <utility>

#include "Socle/Fichiers.hpp"

namespace tarnavelle {

class Ecrivain {
 public:
  explicit Ecrivain(int descripteur) : descripteur_(descripteur) {}

  /// A line without its line feed. Waits for a peer that does not read: nothing piles up here.
  void ligne(std::string texte) {
    texte += '\n';
    const std::lock_guard garde(verrou_);
    ecrireTout(descripteur_, texte);
  }

  /// Whole lines, if any, told while no other can leave: no reply overtakes what is said of its call. Who asks
  /// for a lock in `dire` writes nothing while it holds that lock.
  template <class Dire>
  void lignes(Dire dire) {
    const std::lock_guard garde(verrou_);
    if (const std::string texte = dire(); !texte.empty()) ecrireTout(descripteur_, texte);
  }

 private:
  std::mutex verrou_;
  const int descripteur_;
};

/// Where the replies to one line go: each by itself, or, for a batch, together once the last of them is there
/// and nobody holds the batch any more.
class Destination {
 public:
  Destination(Ecrivain& ecrivain, bool lot) : ecrivain_(ecrivain), lot_(lot) {}
  ~Destination() {
    if (!reponses_.empty()) ecrivain_.ligne("[" + reponses_ + "]");
  }
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  void rendre(std::string reponse) {
    if (!lot_) return ecrivain_.ligne(std::move(reponse));
    const std::lock_guard garde(verrou_);
    reponses_.append(reponses_.empty() ? "" : ",").append(reponse);
  }

 private:
  Ecrivain& ecrivain_;
  const bool lot_;
  std::mutex verrou_;
  std::string reponses_;
};

}  // namespace tarnavelle
