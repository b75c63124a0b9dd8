// The raw data of the simulated Ashtech receivers, read as a host would and solved for the antenna. Decoder,
// orbit and solution are this file's own, so that a slip in the simulator does not cancel out.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simulator/simulator.h"

namespace {

constexpr double kLight = 299792458.0, kPi = 3.1415926535898, kTurn = 7.2921151467e-5, kMu = 3.986005e14;
constexpr double kWavelength = kLight / 1575.42e6;

struct Measurement {
  int prn, to_follow;
  double range, phase, doppler;
};

struct Fix {
  double receiver_time, x, y, z, clock, drift;
  std::vector<Measurement> satellites;
};

// Numbers of an SNV message by their offset, all widened to double.
using Orbit = std::map<int, double>;

struct Recording {
  std::vector<Fix> fixes;
  std::map<int, Orbit> orbits;  ///< the last one of each satellite
  std::vector<int> told;        ///< satellites in the order of their SNV messages
};

std::uint64_t Big(const std::string& bytes, std::size_t at, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t i = at; i < at + width; ++i) value = value << 8 | static_cast<unsigned char>(bytes.at(i));
  return value;
}
double Double(const std::string& p, std::size_t at) {
  return std::bit_cast<double>(Big(p, at, 8));
}
double Float(const std::string& p, std::size_t at) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(Big(p, at, 4)));
}
int Integer(const std::string& p, std::size_t at) {
  return static_cast<std::int32_t>(Big(p, at, 4));
}

void ExpectGoodSum(const std::string& payload) {
  unsigned sum = 0;
  for (std::size_t i = 0; i + 2 < payload.size(); i += 2) sum += static_cast<unsigned>(Big(payload, i, 2));
  EXPECT_EQ(sum & 0xFFFF, Big(payload, payload.size() - 2, 2));
}

Orbit ReadOrbit(const std::string& p) {
  Orbit orbit;
  for (const int at : {2, 14, 62}) orbit[at] = Integer(p, static_cast<std::size_t>(at));
  for (const int at : {6, 18, 22, 26, 34, 66, 70, 74, 78, 82, 86, 114, 118}) {
    orbit[at] = Float(p, static_cast<std::size_t>(at));
  }
  for (const int at : {38, 46, 54, 90, 98, 106}) orbit[at] = Double(p, static_cast<std::size_t>(at));
  return orbit;
}

Recording Read(const std::string& bytes) {
  static const std::map<std::string, std::size_t> kPayloads = {{"MBN", 42}, {"PBN", 56}, {"SNV", 132}};
  Recording recording;
  std::vector<Measurement> gathered;
  for (std::size_t at = bytes.find("$PASHR,"); at != bytes.npos; at = bytes.find("$PASHR,", at)) {
    const std::string kind = bytes.substr(at + 7, 3);
    at += 11;
    const auto known = kPayloads.find(kind);
    if (known == kPayloads.end()) continue;
    const std::string p = bytes.substr(at, known->second);
    EXPECT_EQ(bytes.substr(at + p.size(), 2), "\r\n");
    ExpectGoodSum(p);
    at += p.size();
    if (kind == "MBN") {
      EXPECT_EQ(p[0], 1);
      EXPECT_EQ(p[9], 24);
      gathered.push_back(
          {p[2], p[1], kLight * (1 - Double(p, 12)), -Double(p, 24), Integer(p, 20) * -0.0001});
    } else if (kind == "PBN") {
      recording.fixes.push_back({Integer(p, 0) * 0.001, Double(p, 8), Double(p, 16), Double(p, 24),
                                 Float(p, 32), Float(p, 48), std::exchange(gathered, {})});
    } else {
      EXPECT_EQ(Big(p, 0, 2), 2314U % 1024);
      recording.told.push_back(p[128] + 1);
      recording.orbits[p[128] + 1] = ReadOrbit(p);
    }
  }
  return recording;
}

struct Place {
  double x, y, z, clock;  ///< the clock in metres
};

// Satellite at a time of the week, by IS-GPS-200; the angles come in semicircles.
Place SatelliteAt(const Orbit& o, double t) {
  const double a = o.at(54) * o.at(54), e = o.at(46), tk = t - o.at(62);
  const double mean = kPi * o.at(38) + (std::sqrt(kMu / (a * a * a)) + kPi * o.at(34)) * tk;
  double ek = mean;
  for (int i = 0; i < 20; ++i) ek = mean + e * std::sin(ek);
  const double phi = 2 * std::atan(std::sqrt((1 + e) / (1 - e)) * std::tan(ek / 2)) + kPi * o.at(98);
  const double s = std::sin(2 * phi), c = std::cos(2 * phi);
  const double u = phi + o.at(86) * s + o.at(82) * c;
  const double r = a * (1 - e * std::cos(ek)) + o.at(78) * s + o.at(70) * c;
  const double i = kPi * o.at(106) + kPi * o.at(118) * tk + o.at(74) * s + o.at(66) * c;
  const double node = kPi * o.at(90) + kPi * o.at(114) * tk - kTurn * t;
  const double x = r * std::cos(u), y = r * std::sin(u) * std::cos(i);
  const double tc = t - o.at(14);
  const double clock = o.at(26) + o.at(22) * tc + o.at(18) * tc * tc - o.at(6) -
                       2 * std::sqrt(kMu) / (kLight * kLight) * e * o.at(54) * std::sin(ek);
  return {x * std::cos(node) - y * std::sin(node), x * std::sin(node) + y * std::cos(node),
          r * std::sin(u) * std::sin(i), kLight * clock};
}

// Least squares over all satellites of an epoch, from nowhere near on.
Place Solve(const Fix& fix, const std::map<int, Orbit>& orbits) {
  Place place{4e6, 7e5, 5e6, 0};
  for (int round = 0; round < 8; ++round) {
    std::array<std::array<double, 5>, 4> n{};
    for (const Measurement& m : fix.satellites) {
      const Orbit& orbit = orbits.at(m.prn);
      double sent = fix.receiver_time - m.range / kLight;  // by the satellite's clock
      for (int i = 0; i < 3; ++i)
        sent = fix.receiver_time - (m.range + SatelliteAt(orbit, sent).clock) / kLight;
      const Place sat = SatelliteAt(orbit, sent);
      const double angle = kTurn * (fix.receiver_time - place.clock / kLight - sent);
      const double dx = sat.x * std::cos(angle) + sat.y * std::sin(angle) - place.x;
      const double dy = sat.y * std::cos(angle) - sat.x * std::sin(angle) - place.y;
      const double dz = sat.z - place.z, d = std::sqrt(dx * dx + dy * dy + dz * dz);
      const double row[5] = {-dx / d, -dy / d, -dz / d, 1, m.range - (d + place.clock - sat.clock)};
      for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 5; ++j) n[i][j] += row[i] * row[j];
      }
    }
    for (std::size_t k = 0; k < 4; ++k) {
      for (std::size_t i = 0; i < 4; ++i) {
        const double factor = i == k ? 0 : n[i][k] / n[k][k];
        for (std::size_t j = 0; j < 5; ++j) n[i][j] -= factor * n[k][j];
      }
    }
    place = {place.x + n[0][4] / n[0][0], place.y + n[1][4] / n[1][1], place.z + n[2][4] / n[2][2],
             place.clock + n[3][4] / n[3][3]};
  }
  return place;
}

std::unique_ptr<simulator::Receiver> Make(bool moving, int later = 0) {
  simulator::Options options;
  options.start_utc += std::chrono::seconds(later);
  options.model = "Ashtech";
  options.moving = moving;
  auto receiver = simulator::MakeReceiver(options);
  receiver->Receive("$PASHS,RAW,MBN,A,ON\r\n$PASHS,RAW,PBN,A,ON\r\n$PASHS,RAW,SNV,A,ON\r\n");
  return receiver;
}

class SimulatorRaw : public testing::TestWithParam<bool> {};

TEST_P(SimulatorRaw, PutsTheAntennaWhereItIs) {
  auto receiver = Make(GetParam());
  const Recording recording = Read(receiver->Advance(90));
  ASSERT_EQ(recording.fixes.size(), 90U);
  for (const Fix& fix : recording.fixes) {
    const Place place = Solve(fix, recording.orbits);
    const auto truth = receiver->TruthAt({2314, fix.receiver_time - fix.clock / kLight});
    EXPECT_LT(std::hypot(place.x - truth.position.x, place.y - truth.position.y, place.z - truth.position.z),
              0.01);
    EXPECT_LT(std::hypot(fix.x - truth.position.x, fix.y - truth.position.y, fix.z - truth.position.z), 1e-4);
    EXPECT_NEAR(place.clock, kLight * truth.clock_offset, 0.01);
    EXPECT_NEAR(fix.clock, kLight * truth.clock_offset, 0.01);
    EXPECT_NEAR(fix.drift, kLight * truth.clock_drift, 1e-5);
  }
}
INSTANTIATE_TEST_SUITE_P(Antenna, SimulatorRaw, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& moving) {
                           return moving.param ? "Moving" : "AtRest";
                         });

TEST(SimulatorRawMessages, KeepRangePhaseAndDopplerInStep) {
  std::map<int, Measurement> last;
  for (const Fix& fix : Read(Make(true)->Advance(60)).fixes) {
    for (const Measurement& m : fix.satellites) {
      const double ambiguity = m.phase - m.range / kWavelength;
      EXPECT_NEAR(ambiguity, std::round(ambiguity), 1e-4);
      if (const auto before = last.find(m.prn); before != last.end()) {
        // The mean of two Dopplers is the fall of phase in the second between them, but for the curvature.
        EXPECT_NEAR((m.doppler + before->second.doppler) / 2, before->second.phase - m.phase, 0.02);
        EXPECT_NEAR(ambiguity, before->second.phase - before->second.range / kWavelength, 1e-4);
      }
      last.insert_or_assign(m.prn, m);
    }
  }
  EXPECT_GE(last.size(), 4U);
}

TEST(SimulatorRawMessages, CountDownToTheLastSatelliteOfAnEpoch) {
  for (const Fix& fix : Read(Make(true)->Advance(5)).fixes) {
    int to_follow = static_cast<int>(fix.satellites.size());
    EXPECT_LE(to_follow, 11);
    for (const Measurement& m : fix.satellites) EXPECT_EQ(m.to_follow, --to_follow);
  }
}

TEST(SimulatorRawMessages, FollowTheRawIntervalAndStopWhenSwitchedOff) {
  auto receiver = Make(true);
  receiver->Receive("$PASHS,RCI,0.250000\r\n");
  const auto fixes = Read(receiver->Advance(10)).fixes;
  ASSERT_EQ(fixes.size(), 40U);
  EXPECT_NEAR(fixes[1].receiver_time - fixes[0].receiver_time, 0.25, 1e-9);
  receiver->Receive("$PASHS,RAW,MBN,A,OFF\r\n$PASHS,RAW,PBN,A,OFF\r\n$PASHS,RAW,SNV,A,OFF\r\n");
  const Recording rest = Read(receiver->Advance(10));
  EXPECT_TRUE(rest.fixes.empty());
  EXPECT_TRUE(rest.told.empty());
}

TEST(SimulatorRawMessages, TellEveryEphemerisAtTheStartAndThenInTurn) {
  auto receiver = Make(true);
  const Recording first = Read(receiver->Advance(1));
  ASSERT_FALSE(first.fixes.empty());
  for (const Measurement& m : first.fixes[0].satellites) EXPECT_EQ(first.orbits.count(m.prn), 1U);
  const std::vector<int> told = Read(receiver->Advance(5.0 * static_cast<double>(first.told.size()))).told;
  EXPECT_TRUE(std::is_permutation(told.begin(), told.end(), first.told.begin(), first.told.end()));
}

TEST(SimulatorRawMessages, StayTrueAcrossAnIssueOfNewEphemerides) {
  // New ones come into force at whole multiples of two hours of the week.
  auto receiver = Make(true, 7200 - 201618 % 7200 - 30);
  const Recording ahead = Read(receiver->Advance(28)), behind = Read(receiver->Advance(22));
  ASSERT_EQ(behind.fixes.size(), 22U);
  for (const Fix& fix : behind.fixes) {
    const bool is_new = fix.receiver_time >= 208800;
    const Place place = Solve(fix, is_new ? behind.orbits : ahead.orbits);
    const auto truth = receiver->TruthAt({2314, fix.receiver_time - fix.clock / kLight});
    EXPECT_LT(std::hypot(place.x - truth.position.x, place.y - truth.position.y, place.z - truth.position.z),
              0.02);
  }
  for (const auto& [prn, orbit] : behind.orbits) EXPECT_EQ(orbit.at(62), ahead.orbits.at(prn).at(62) + 7200);
}

}  // namespace
