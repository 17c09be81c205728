#pragma once

namespace VeltoTouch {

// Lambdas as one visitor of a variant, one for each alternative.
template <class... Lambdas>
struct Overloaded : Lambdas... {
    using Lambdas::operator()...;
};
template <class... Lambdas>
Overloaded(Lambdas...) -> Overloaded<Lambdas...>;

} // namespace VeltoTouch
