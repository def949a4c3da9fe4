#include <openssl/crypto.h>
#include <openssl/ssl.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

#include "BoucleDetacheeInterne.hpp"

namespace tarnavelle::interne {
namespace {

using boost::asio::io_context;

/// The loops at work. Never destroyed: a thread may outlast the process's static objects.
class Registre {
 public:
  static Registre& commun() {
    static Registre& registre = *new Registre;
    static const Portier portier{registre};
    return registre;
  }

  void entrer(io_context& boucle) {
    const std::lock_guard garde(verrou_);
    actives_.insert(&boucle);
    ++fils_;
  }
  void arreter(io_context& boucle) {
    const std::lock_guard garde(verrou_);
    actives_.erase(&boucle);
  }
  void sortir() {
    const std::lock_guard garde(verrou_);
    --fils_;
    sortie_.notify_all();
  }

 private:
  struct Portier {
    explicit Portier(Registre& r) : registre(r) {
      OPENSSL_init_ssl(0, nullptr);  // OpenSSL's own end is then set for after this object's
    }
    ~Portier() {
      std::unique_lock garde(registre.verrou_);
      for (io_context* boucle : registre.actives_) boucle->stop();
      registre.sortie_.wait_for(garde, std::chrono::seconds(1), [this] { return registre.fils_ == 0; });
    }
    Portier(const Portier&) = delete;
    Portier& operator=(const Portier&) = delete;

    Registre& registre;
  };

  std::mutex verrou_;
  std::condition_variable sortie_;
  std::set<io_context*> actives_;
  int fils_ = 0;
};

void tourner(io_context& boucle, const std::function<void()>& surEchec) {
  while (true) {
    try {
      boucle.run();
      return;
    } catch (const std::exception&) {  // memory or descriptors ran out
      surEchec();
    }
  }
}

}  // namespace

bool lancerBoucle(io_context& boucle, std::shared_ptr<void> proprietaire, std::function<void()> surEchec) {
  Registre& registre = Registre::commun();
  registre.entrer(boucle);
  try {
    std::thread([&registre, &boucle, proprietaire = std::move(proprietaire),
                 surEchec = std::move(surEchec)]() mutable {
      tourner(boucle, surEchec);
      registre.arreter(boucle);
      proprietaire.reset();
      OPENSSL_thread_stop();  // which the end of the thread would do, unseen by who waits for it
      registre.sortir();
    }).detach();
    return true;
  } catch (const std::system_error&) {  // no thread to be had
    registre.arreter(boucle);
    registre.sortir();
    return false;
  }
}

}  // namespace tarnavelle::interne
