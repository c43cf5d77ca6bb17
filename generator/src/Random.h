// The random numbers of the generator: std::mt19937 reduced by modulo, so that a seed gives the
// same numbers with every standard library.
#ifndef KOVA_GENERATOR_SRC_RANDOM_H_
#define KOVA_GENERATOR_SRC_RANDOM_H_

#include <cstdint>
#include <random>

namespace kova::generator {

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Next() { return static_cast<std::uint32_t>(engine_()); }
  // A number from 0 to bound - 1.
  std::uint32_t Below(std::uint32_t bound) { return Next() % bound; }

 private:
  std::mt19937 engine_;
};

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_SRC_RANDOM_H_
