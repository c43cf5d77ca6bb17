// ZANTime: a point in time of the knowledge engine, in whole seconds since 1970-01-01 00:00 UTC.
#ifndef KOVAMAPPINGSERVICES_ZANTIME_H_
#define KOVAMAPPINGSERVICES_ZANTIME_H_

#include <cstdint>

class ZANTime {
 public:
  constexpr ZANTime() noexcept = default;
  constexpr explicit ZANTime(std::int64_t secondsSinceEpoch) noexcept : seconds_(secondsSinceEpoch) {}

  // Seconds since the epoch (negative before it).
  constexpr std::int64_t Gettime_t() const noexcept { return seconds_; }

  friend constexpr bool operator==(const ZANTime& a, const ZANTime& b) noexcept { return a.seconds_ == b.seconds_; }

 private:
  std::int64_t seconds_ = 0;
};

#endif  // KOVAMAPPINGSERVICES_ZANTIME_H_
