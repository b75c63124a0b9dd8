#include "simulator/navdata.h"

#include <cmath>

namespace simulator {
namespace {

/// Calls `visit` with each term's subframe, first bit, count of bits, exponent of its step, and the term.
/// Bits count from 0 without the parity (IS-GPS-200, 20.3.3).
template <class AnyEphemeris, class Visitor>
void VisitTerms(AnyEphemeris& e, Visitor visit) {
  visit(1, 160, 8, -31, e.tgd);
  visit(1, 192, 8, -55, e.af2);
  visit(1, 200, 16, -43, e.af1);
  visit(1, 216, 22, -31, e.af0);
  visit(2, 56, 16, -5, e.crs);
  visit(2, 72, 16, -43, e.delta_n);
  visit(2, 88, 32, -31, e.m0);
  visit(2, 120, 16, -29, e.cuc);
  visit(2, 136, 32, -33, e.eccentricity);
  visit(2, 168, 16, -29, e.cus);
  visit(2, 184, 32, -19, e.sqrt_a);
  visit(3, 48, 16, -29, e.cic);
  visit(3, 64, 32, -31, e.omega0);
  visit(3, 96, 16, -29, e.cis);
  visit(3, 112, 32, -31, e.i0);
  visit(3, 144, 16, -5, e.crc);
  visit(3, 160, 32, -31, e.omega);
  visit(3, 192, 24, -43, e.omega_dot);
  visit(3, 224, 14, -43, e.i_dot);
}

void Put(std::array<std::uint32_t, 10>& words, int at, int count, long long value) {
  for (int i = 0; i < count; ++i) {
    const int bit = at + i;
    const auto one = static_cast<std::uint32_t>(value >> (count - 1 - i) & 1);
    words[static_cast<std::size_t>(bit / 24)] |= one << (23 - bit % 24);
  }
}

}  // namespace

Ephemeris AsBroadcast(const Ephemeris& ephemeris) {
  Ephemeris e = ephemeris;
  VisitTerms(e, [](int, int, int, int exponent, auto& term) {
    const double steps = std::nearbyint(std::ldexp(static_cast<double>(term), -exponent));
    term = static_cast<std::remove_reference_t<decltype(term)>>(std::ldexp(steps, exponent));
  });
  return e;
}

std::array<std::uint32_t, 10> Subframe(int id, const Ephemeris& ephemeris, const GpsTime& time) {
  constexpr int kFrame = 30;
  const GpsTime sent = time + -kFrame;
  std::array<std::uint32_t, 10> words{};
  Put(words, 0, 8, 0x8B);
  // The count of 6 second subframes that the next one begins with.
  Put(words, 24, 17, (static_cast<int>(sent.seconds) / kFrame * 5 + id) % 100800);
  Put(words, 43, 3, id);
  if (id == 1) {
    Put(words, 48, 10, sent.week % 1024);
    Put(words, 58, 2, 1);  // P code on L2
    Put(words, 70, 2, ephemeris.ClockIssue() >> 8);
    Put(words, 168, 8, ephemeris.ClockIssue() & 0xFF);
    Put(words, 176, 16, ephemeris.toc / 16);
  } else {
    Put(words, id == 2 ? 48 : 216, 8, ephemeris.issue);
    if (id == 2) {
      Put(words, 216, 16, ephemeris.toe / 16);
      Put(words, 233, 5, 31);  // the age of a table that is not sent
    }
  }
  VisitTerms(ephemeris, [&](int subframe, int at, int count, int exponent, auto term) {
    if (subframe == id) Put(words, at, count, std::llround(std::ldexp(static_cast<double>(term), -exponent)));
  });
  return words;
}

}  // namespace simulator
