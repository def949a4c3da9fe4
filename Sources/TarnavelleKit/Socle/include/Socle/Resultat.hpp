// A value, or the reason why there is none: what functions return whose caller acts on a failure. Where nothing
// is to be said of the failure, std::optional is enough. A plain value: one thread at a time.
#pragma once

#include <concepts>
#include <utility>
#include <variant>

namespace tarnavelle {

/// The reason, as it is returned: `return Sinon{ErreurReseau::annulee};`
template <class E>
struct Sinon {
  E raison;
};

template <class E>
Sinon(E) -> Sinon<E>;

/// The value of what only has to be done: `Resultat<Fait, Panne>`.
struct Fait {
  bool operator==(const Fait&) const = default;
};

template <class T, class E>
class Resultat {
 public:
  Resultat(T valeur) : cas_(std::in_place_index<0>, std::move(valeur)) {}
  template <std::convertible_to<E> F>
  Resultat(Sinon<F> sinon) : cas_(std::in_place_index<1>, std::move(sinon.raison)) {}

  explicit operator bool() const { return cas_.index() == 0; }

  /// The value, where there is one: to be asked first.
  T& operator*() & { return *std::get_if<0>(&cas_); }
  const T& operator*() const& { return *std::get_if<0>(&cas_); }
  T operator*() && { return std::move(*std::get_if<0>(&cas_)); }
  T* operator->() { return std::get_if<0>(&cas_); }
  const T* operator->() const { return std::get_if<0>(&cas_); }

  /// The reason, where there is no value.
  const E& raison() const& { return *std::get_if<1>(&cas_); }
  E raison() && { return std::move(*std::get_if<1>(&cas_)); }

  bool operator==(const Resultat&) const = default;

 private:
  std::variant<T, E> cas_;
};

}  // namespace tarnavelle
