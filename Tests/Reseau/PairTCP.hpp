// A TCP peer that misbehaves on purpose: a listening socket on loopback whose connections are handed,
// one after the other, to the scripts a test gives. Raw sockets, so that any byte can be sent or held.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace tarnavelle::essai {

/// One accepted connection. Reads give up after two seconds, so that a test cannot hang.
class Connexion {
 public:
  explicit Connexion(int fd) : fd_(fd) {
    const int oui = 1;  // each send is a packet of its own
    ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &oui, sizeof oui);
  }

  /// One request: its head and as many bytes of body as it announces; empty when the peer closed.
  std::string lireRequete() {
    std::string lu;
    while (true) {
      if (const auto fin = lu.find("\r\n\r\n"); fin != std::string::npos) {
        const auto longueur = lu.find("Content-Length: ");
        const auto corps = longueur == std::string::npos ? 0 : std::stoul(lu.substr(longueur + 16, 20));
        if (lu.size() >= fin + 4 + corps) return lu;
      }
      char tampon[65536];
      pollfd attente{fd_, POLLIN, 0};
      if (::poll(&attente, 1, 2000) <= 0) return {};
      const auto n = ::recv(fd_, tampon, sizeof tampon, 0);
      if (n <= 0) return {};
      lu.append(tampon, static_cast<std::size_t>(n));
    }
  }

  /// False once the peer no longer listens.
  bool envoyer(std::string_view octets) {
    while (!octets.empty()) {
      const auto n = ::send(fd_, octets.data(), octets.size(), MSG_NOSIGNAL);
      if (n <= 0) return false;
      octets.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
  }

  /// Ends it with a reset. Its number stays taken.
  void couperNet() {
    const linger sansAdieu{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(fd_, SOL_SOCKET, SO_LINGER, &sansAdieu, sizeof sansAdieu);
    const int rien = ::open("/dev/null", O_RDWR);
    ::dup2(rien, fd_);
    ::close(rien);
  }

  /// Waits for the client's end of the connection.
  void attendreFermeture() {
    pollfd attente{fd_, POLLIN, 0};
    ::poll(&attente, 1, 3000);
  }

 private:
  int fd_;
};

class PairTCP {
 public:
  using Script = std::function<void(Connexion&)>;

  /// Reads a request and sends these bytes; the client ends the connection if it is kept.
  static Script envoyer(std::string octets, bool garder = false) {
    return [octets = std::move(octets), garder](Connexion& c) {
      c.lireRequete();
      c.envoyer(octets);
      if (garder) c.attendreFermeture();
    };
  }

  /// The n-th connection runs the n-th script in a thread of its own; later ones run the last script.
  explicit PairTCP(std::vector<Script> scripts) : scripts_(std::move(scripts)) {
    ecoute_ = ::socket(AF_INET, SOCK_STREAM, 0);
    adresse_.sin_family = AF_INET;
    adresse_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(ecoute_, reinterpret_cast<sockaddr*>(&adresse_), sizeof adresse_);
    ::listen(ecoute_, 16);
    socklen_t taille = sizeof adresse_;
    ::getsockname(ecoute_, reinterpret_cast<sockaddr*>(&adresse_), &taille);
    accueil_ = std::thread([this] { accueillir(); });
  }

  ~PairTCP() {
    fini_ = true;
    const int derniere = ::socket(AF_INET, SOCK_STREAM, 0);  // not every system lets shutdown() wake accept()
    ::connect(derniere, reinterpret_cast<const sockaddr*>(&adresse_), sizeof adresse_);
    accueil_.join();
    ::close(derniere);
    for (const int fd : ouvertes_) ::shutdown(fd, SHUT_RD);  // a script that still reads sees the end
    for (auto& fil : fils_) fil.join();
    for (const int fd : ouvertes_) ::close(fd);
    ::close(ecoute_);
  }
  PairTCP(const PairTCP&) = delete;
  PairTCP& operator=(const PairTCP&) = delete;

  int port() const { return ntohs(adresse_.sin_port); }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port()) + "/action"; }
  int connexions() const { return connexions_; }

 private:
  void accueillir() {
    while (true) {
      const int fd = ::accept(ecoute_, nullptr, nullptr);
      if (fd < 0) return;
      if (fini_) {
        ::close(fd);
        return;
      }
      const auto rang = static_cast<std::size_t>(connexions_++);
      const auto& script = scripts_[std::min(rang, scripts_.size() - 1)];
      ouvertes_.push_back(fd);
      fils_.emplace_back([fd, &script] {
        Connexion connexion(fd);
        script(connexion);
        ::shutdown(fd, SHUT_RDWR);
      });
    }
  }

  std::vector<Script> scripts_;
  int ecoute_ = -1;
  sockaddr_in adresse_{};
  std::atomic<bool> fini_ = false;
  std::atomic<int> connexions_ = 0;
  std::thread accueil_;
  std::vector<std::thread> fils_;
  std::vector<int> ouvertes_;  // closed last, so that no number is reused meanwhile
};

}  // namespace tarnavelle::essai
