#include "Verbes/Horloge.hpp"

namespace tarnavelle::Plateau {

Instant HorlogeReelle::maintenant() const { return std::chrono::steady_clock::now(); }

void HorlogeReelle::attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                             Instant echeance) {
  reveil.wait_until(verrou, echeance);
}

std::chrono::system_clock::time_point HorlogeReelle::date() const { return std::chrono::system_clock::now(); }

}  // namespace tarnavelle::Plateau
