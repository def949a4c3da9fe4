// A streaming HTTP/1.1 client: http and https with the server's certificate verified, any method, the answer's
// status first and then its body as lines, as they arrive. No redirect is followed, so that a token goes
// nowhere else; no proxy of the environment is used; nothing is retried; no encoding of the content is asked
// for, and one that comes nevertheless is unreadable.
//
// A stream is silent for the request's `delai` at most: every byte starts that anew, chunk framing included.
// One thread follows the stream; `interrompre` may come from any other, and no call outlasts it by more than
// some milliseconds, the destructor included: a name look-up, which nothing can stop, is left to end alone.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "Liaison/FluxLignes.hpp"

namespace tarnavelle {

class FluxHTTP final : public FluxLignes {
 public:
  /// Longest time from name look-up to the connection's readiness, when the request allows more silence.
  static constexpr std::chrono::seconds ouvertureMax{60};

  FluxHTTP();
  ~FluxHTTP() override;
  FluxHTTP(const FluxHTTP&) = delete;
  FluxHTTP& operator=(const FluxHTTP&) = delete;

  /// `autre` for an unusable URL or a header value that holds a control character: nothing is sent then.
  Resultat<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) override;

  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente = {}) override;
  void fermer() override;
  void pauser(std::chrono::milliseconds duree) override;
  void interrompre() override;
  bool interrompu() const override { return interrompu_; }

 private:
  class Echange;

  std::atomic<bool> interrompu_ = false;
  std::mutex verrou_;  ///< of what `interrompre` touches
  std::condition_variable reveil_;
  std::shared_ptr<Echange> echange_;
};

}  // namespace tarnavelle
