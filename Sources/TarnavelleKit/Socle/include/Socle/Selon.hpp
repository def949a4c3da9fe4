// The one visitor helper: `std::visit(Selon{[](const A&) {…}, [](const B&) {…}}, variant)`.
// Visits list every case; a missing one does not compile. No state.
#pragma once

namespace tarnavelle {

template <class... Cas>
struct Selon : Cas... {
  using Cas::operator()...;
};
template <class... Cas>
Selon(Cas...) -> Selon<Cas...>;

}  // namespace tarnavelle
