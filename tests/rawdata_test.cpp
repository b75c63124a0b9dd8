#include "gpsengine/rawdata/rawdata.h"

#include "simulator/bytes.h"
#include "simulator/oemlog.h"
#include "simulator/world.h"
#include "tests/support/basics.h"
#include "tests/support/blocks.h"

using namespace rawdata;

namespace {

using Words = std::vector<WORD>;

Words WordsOf(const std::string& bytes) {
  Words words;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    words.push_back(static_cast<WORD>(static_cast<unsigned char>(bytes[i]) |
                                      static_cast<unsigned char>(bytes[i + 1]) << 8));
  return words;
}

// The sum of a $BIN block made right again, for what a receiver would really have sent.
std::string Summed(std::string block) {
  unsigned sum = 0;
  for (std::size_t i = 8; i + 4 < block.size(); ++i) sum += static_cast<unsigned char>(block[i]);
  block[block.size() - 4] = static_cast<char>(sum);
  block[block.size() - 3] = static_cast<char>(sum >> 8);
  return block;
}

simulator::World TheWorld() {
  return simulator::World(simulator::Options());
}

TEST(RawData, MeasuresWhatTheReceiverHas) {
  for (const BlockSource& source : kObservations) {
    PhaseHistory history;
    ObservationEpoch epoch;
    int seconds = 0;
    for (const std::string& block : Blocks(source, 3)) {
      ASSERT_EQ(ContentOf(ReadHead(WordsOf(block))), Content::observations) << source.command;
      ASSERT_TRUE(DecodeObservations(WordsOf(block), history, epoch)) << source.command;
      const auto time = TheWorld().TimeAt(++seconds);
      EXPECT_EQ(epoch.week, time.week);
      EXPECT_EQ(epoch.time_of_week, time.seconds);
      const auto truth = TheWorld().Observe(seconds, 5, 12);
      ASSERT_EQ(epoch.signals.size(), truth.size()) << source.command;
      for (std::size_t i = 0; i < truth.size(); ++i) {
        const SignalObservation& signal = epoch.signals[i];
        EXPECT_EQ(signal.system + std::to_string(signal.satellite) + signal.code,
                  "G" + std::to_string(truth[i].view.prn) + "1C");
        EXPECT_NEAR(signal.pseudorange, truth[i].pseudorange, source.range);
        EXPECT_NEAR(std::remainder(signal.carrier_phase - truth[i].phase, 8388608), 0, source.phase);
        const double from_range = signal.carrier_phase - signal.pseudorange / 0.190293672798;
        EXPECT_TRUE(source.phase < 0.001 || std::fabs(from_range) < 4'194'305);
        EXPECT_NEAR(signal.doppler, truth[i].doppler, source.doppler);
        EXPECT_NEAR(signal.cn0, truth[i].view.snr, 0.2);
        EXPECT_EQ(signal.slip, seconds == 1) << source.command;
      }
    }
    EXPECT_EQ(seconds, 3);
  }
}

TEST(RawData, ReadsTheOrbitThatIsFlown) {
  for (const BlockSource& source : kEphemerides) {
    const auto blocks = Blocks(source, 4);
    EXPECT_GE(blocks.size(), 4u);
    for (const std::string& block : blocks) {
      ASSERT_EQ(ContentOf(ReadHead(WordsOf(block))), Content::ephemeris) << source.command;
      BroadcastEphemeris read;
      ASSERT_TRUE(DecodeEphemeris(WordsOf(block), read)) << source.command;
      const CGPSDataEphemeris& orbit = read.orbit;
      const auto time = TheWorld().TimeAt(4);
      const auto flown = TheWorld().EphemerisAt(orbit.m_nPRN, 4);
      EXPECT_EQ(orbit.m_nWeek, source.length > 0 ? time.week % 1024 : time.week) << source.command;
      EXPECT_NEAR(orbit.m_lTow, time.seconds, 60);
      EXPECT_EQ(orbit.m_lAodc, flown.ClockIssue());
      EXPECT_EQ(orbit.m_lAode, flown.issue);
      EXPECT_EQ(orbit.m_lToc, flown.toc);
      EXPECT_EQ(orbit.m_lToe, flown.toe);
      EXPECT_EQ(read.accuracy, 2.0);
      EXPECT_EQ(read.health, 0);
      EXPECT_FALSE(read.long_fit);
      EXPECT_FALSE(read.l2p_without_data);
      const double terms[] = {orbit.m_dTgd,      orbit.m_dAf0,   orbit.m_dAf1,   orbit.m_dAf2,
                              orbit.m_dDeltaN,   orbit.m_dM0,    orbit.m_dSqrtA, orbit.m_dEccentricity,
                              orbit.m_dOmega0,   orbit.m_dOmega, orbit.m_dI0,    orbit.m_dIDot,
                              orbit.m_dOmegaDot, orbit.m_dCrc,   orbit.m_dCrs,   orbit.m_dCuc,
                              orbit.m_dCus,      orbit.m_dCic,   orbit.m_dCis};
      const double truths[] = {flown.tgd, flown.af0,    flown.af1,          flown.af2,    flown.delta_n,
                               flown.m0,  flown.sqrt_a, flown.eccentricity, flown.omega0, flown.omega,
                               flown.i0,  flown.i_dot,  flown.omega_dot,    flown.crc,    flown.crs,
                               flown.cuc, flown.cus,    flown.cic,          flown.cis};
      for (std::size_t i = 0; i < std::size(terms); ++i)
        EXPECT_NEAR(terms[i], truths[i], 1e-15 * std::fabs(truths[i])) << i;
    }
  }
}

// Not one bit of a block may be another, and nothing may be missing.
TEST(RawData, RefusesWhatIsDamagedOrShort) {
  for (const auto* sources : {&kObservations, &kEphemerides}) {
    for (const BlockSource& source : *sources) {
      const std::string block = Blocks(source, 1).at(0);
      PhaseHistory history;
      ObservationEpoch epoch;
      BroadcastEphemeris ephemeris;
      const auto is_taken = [&](const std::string& bytes) {
        epoch.week = 1;
        const bool observed = DecodeObservations(WordsOf(bytes), history, epoch);
        EXPECT_TRUE(observed || (epoch.week == 0 && epoch.signals.empty()));
        return observed || DecodeEphemeris(WordsOf(bytes), ephemeris);
      };
      ASSERT_TRUE(is_taken(block)) << source.command;
      EXPECT_TRUE(is_taken(block + "behind it")) << source.command;
      for (const std::size_t length : {4u, 6u}) {
        const BlockHead head = ReadHead(WordsOf(block.substr(0, length)));
        EXPECT_EQ(head.family != Family::none, length == 6) << source.command;
      }
      for (const std::size_t place : {0u, 2u}) {
        std::string other = block;
        other[place] = 'x';
        EXPECT_EQ(ReadHead(WordsOf(other)).family, Family::none) << source.command;
      }
      for (std::size_t length = 0; length < block.size(); length += 2)
        EXPECT_FALSE(is_taken(block.substr(0, length))) << source.command << ' ' << length;
      for (std::size_t bit = 0; bit < 8 * block.size(); ++bit) {
        std::string damaged = block;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
        EXPECT_FALSE(is_taken(damaged)) << source.command << " bit " << bit;
      }
    }
  }
}

TEST(RawData, RefusesASoundBlockOfWhatCannotBe) {
  const std::string observations = Blocks(kObservations[0], 1).at(0);
  const std::string ephemeris = Blocks(kEphemerides[0], 1).at(0);
  const auto with = [](std::string block, std::size_t at, auto value) {
    std::string bytes;
    simulator::AppendLittle(bytes, value);
    return WordsOf(Summed(block.replace(at, bytes.size(), bytes)));
  };
  PhaseHistory history;
  ObservationEpoch epoch;
  for (const double seconds : {-1.0, 604801.0, double(NAN), double(INFINITY)})
    EXPECT_FALSE(DecodeObservations(with(observations, 12, seconds), history, epoch)) << seconds;
  constexpr std::size_t kFirstRange = 28, kSecondRange = kFirstRange + 24;
  for (const double metres : {1.0, -2e7, 1e9, double(NAN)}) {
    for (const auto place : {kFirstRange, kSecondRange})
      EXPECT_FALSE(DecodeObservations(with(observations, place, metres), history, epoch)) << metres;
    EXPECT_TRUE(epoch.signals.empty() && epoch.week == 0) << "the first satellite is not kept";
  }
  const int week = TheWorld().TimeAt(0).week;
  const std::tuple<double, int, double> ends[] = {
      {604800.25, week + 1, 0.25}, {-0.25, week - 1, 604799.75}, {-1e-15, week, 0.0}};
  for (const auto& [told, in_week, seconds] : ends) {
    ASSERT_TRUE(DecodeObservations(with(observations, 12, told), history, epoch));
    EXPECT_EQ(epoch.time_of_week, seconds);
    EXPECT_EQ(epoch.week, in_week);
  }
  EXPECT_TRUE(DecodeObservations(with(observations, 10, std::uint16_t{0}), history, epoch)) << "the first";

  // Binary messages alone, not those of a second antenna, nor ahead of a clock that is set.
  const std::tuple<std::size_t, char, bool> heads[] = {{6, 0, true},     {6, 1, false},   {6, 2, true},
                                                       {6, 0x20, false}, {13, 79, false}, {13, 80, true}};
  const auto oem_with = [](std::string message, std::size_t at, auto value) {
    std::string bytes;
    simulator::AppendLittle(bytes, value);
    message.replace(at, bytes.size(), bytes).resize(message.size() - 4);
    simulator::AppendLittle(message, simulator::OemCrc(message));
    return WordsOf(message);
  };
  const std::string ranges = Blocks(kObservations[1], 1).at(0), orbit = Blocks(kEphemerides[2], 1).at(0);
  for (const auto& [at, byte, taken] : heads)
    EXPECT_EQ(DecodeObservations(oem_with(ranges, at, byte), history, epoch), taken) << int{byte};
  EXPECT_FALSE(DecodeObservations(oem_with(ranges, 14, std::uint16_t{0}), history, epoch)) << "no week";

  const auto compressed = Blocks(kObservations[2], 2);
  ASSERT_TRUE(DecodeObservations(WordsOf(compressed[0]), history, epoch));
  const std::size_t all = epoch.signals.size();
  ASSERT_TRUE(DecodeObservations(oem_with(compressed[0], 28 + 4, 30U << 21), history, epoch));
  EXPECT_EQ(epoch.signals.size(), all - 1) << "without the one that has no name";
  ASSERT_TRUE(DecodeObservations(oem_with(compressed[1], 28 + 4 + 18, 20U << 21 | 16), history, epoch));
  EXPECT_TRUE(epoch.signals[0].slip && !epoch.signals[1].slip) << "locked for half a second";

  BroadcastEphemeris read;
  // No GPS satellite, no week, other issues than those of the clock, no number.
  const std::pair<std::size_t, std::uint64_t> orbits[] = {
      {28, 0},        {28, 33},       {28 + 28, 0},      {28 + 28, 0x8000},
      {28 + 16, 300}, {28 + 20, 300}, {28 + 160, 0x500}, {28 + 64, 0x7FF0ULL << 48}};
  for (const auto& [at, value] : orbits)
    EXPECT_FALSE(DecodeEphemeris(oem_with(orbit, at, value), read)) << at;
  EXPECT_TRUE(DecodeEphemeris(oem_with(orbit, 28 + 28, 0x7FFF), read)) << "the last week";
  for (const auto& [message, length] :
       {std::pair(Blocks(kEphemerides[1], 1).at(0), std::uint16_t{100}), {orbit, std::uint16_t{220}}})
    EXPECT_FALSE(DecodeEphemeris(oem_with(message.substr(0, 28 + length + 4), 8, length), read)) << "short";
  for (const double variance : {-1.0, double(INFINITY), double(NAN), 9.0}) {
    ASSERT_TRUE(DecodeEphemeris(oem_with(orbit, 28 + 216, variance), read));
    EXPECT_EQ(read.accuracy, variance == 9.0 ? 3.0 : 0.0) << variance;
  }
  read = {};
  // No GPS satellite; another preamble, another number of a subframe; orbit and clock of other issues; no
  // square root of an axis.
  const std::pair<std::size_t, std::uint16_t> words[] = {
      {8, 33},           {8, 0},           {16 + 2, 0x1D00}, {16 + 4, 0xFFFF}, {16 + 40 + 10, 0x0010},
      {16 + 40 + 28, 0}, {16 + 80 + 38, 0}};
  for (const auto& [at, value] : words) EXPECT_FALSE(DecodeEphemeris(with(ephemeris, at, value), read)) << at;
  EXPECT_EQ(read.orbit.m_nPRN, 0);
  // The fit, and the age that stands behind it.
  for (const auto word : {std::uint16_t{0x2000}, std::uint16_t{0x1F00}}) {
    ASSERT_TRUE(DecodeEphemeris(with(ephemeris, 16 + 40 + 36, word), read));
    EXPECT_EQ(read.long_fit, word == 0x2000);
  }
  // Word 3 has the index of the accuracy in the four bits from 14 up.
  std::uint32_t third = 0;
  std::memcpy(&third, &ephemeris[16 + 8], sizeof third);
  for (const auto& [index, metres] : {std::pair(6U, 16.0), {7U, 32.0}, {15U, 8192.0}}) {
    ASSERT_TRUE(
        DecodeEphemeris(with(ephemeris, 16 + 8, (third & ~(15U << 14)) | index << 14 | 5U << 8), read));
    EXPECT_EQ(read.accuracy, metres);
    EXPECT_EQ(read.health, 5);
  }
  for (const unsigned bit : {29U, 28U}) {
    ASSERT_TRUE(DecodeEphemeris(with(ephemeris, 16 + 12, 1U << bit), read));
    EXPECT_EQ(read.l2p_without_data, bit == 29);
  }
  // The clock's second order, which no simulated one has, and its first.
  ASSERT_TRUE(DecodeEphemeris(with(ephemeris, 16 + 32, std::uint32_t{0x81u << 22 | 3 << 6}), read));
  EXPECT_EQ(read.orbit.m_dAf2, std::ldexp(-127, -55));
  EXPECT_EQ(read.orbit.m_dAf1, std::ldexp(3, -43));
}

struct Channel {
  std::uint16_t satellite, frequency;
  std::uint32_t system, signal;
  bool phase = true, parity = true, code = true;
  float lock = 100.0F, signal_strength = 45.0F;
  double range = 2.1e7;
};

Words Range(const std::vector<Channel>& channels, double seconds = 0.0) {
  std::string body;
  simulator::AppendLittle(body, static_cast<std::uint32_t>(channels.size()));
  for (const Channel& c : channels) {
    simulator::AppendLittle(body, c.satellite);
    simulator::AppendLittle(body, c.frequency);
    simulator::AppendLittle(body, c.range);
    simulator::AppendLittle(body, 0.05F);
    simulator::AppendLittle(body, -1.1e8);
    for (const float value : {0.01F, -1000.0F, c.signal_strength, c.lock})
      simulator::AppendLittle(body, value);
    simulator::AppendLittle(body, c.system << 16 | c.signal << 21 | std::uint32_t{c.phase} << 10 |
                                      std::uint32_t{c.parity} << 11 | std::uint32_t{c.code} << 12);
  }
  return WordsOf(simulator::OemBinary(43, {2314, 1000.0 + seconds}, body));
}

std::string NamesOf(const ObservationEpoch& epoch) {
  std::string names;
  for (const SignalObservation& signal : epoch.signals)
    names += signal.system + std::to_string(signal.satellite) + ':' + signal.code + ' ';
  return names;
}

TEST(RawData, KnowsTheSatellitesAndSignalsOfEverySystem) {
  PhaseHistory history;
  const auto name = [&](const Channel& channel) {
    ObservationEpoch epoch;
    return DecodeObservations(Range({channel}), history, epoch) ? NamesOf(epoch) : std::string();
  };
  // The first of its satellites and the last one, and its signals by their number.
  const std::pair<Channel, std::string> rows[] = {
      {{1, 0, 0, 0}, "G1 to G32: 0:1C 5:2P 9:2W 14:5Q 16:1L 17:2S"},
      {{38, 7, 1, 0}, "R1 to R24: 0:1C 1:2C 5:2P 6:3Q"},
      {{120, 0, 2, 0}, "S20 to S58: 0:1C 6:5I"},
      {{1, 0, 3, 1}, "E1 to E36: 1:1B 2:1C 6:6B 7:6C 12:5Q 17:7Q 20:8Q"},
      {{1, 0, 4, 0}, "C1 to C63: 0:2I 1:7I 2:6I 4:2I 5:7I 6:6I 7:1P 9:5P 11:7D"},
      {{193, 0, 5, 0}, "J1 to J10: 0:1C 14:5Q 16:1L 17:2S 27:6L"},
      {{1, 0, 6, 0}, "I1 to I14: 0:5A"}};
  for (auto [channel, expected] : rows) {
    std::string codes;
    const std::uint32_t known = channel.signal;
    for (channel.signal = 0; channel.signal < 32; ++channel.signal) {
      const std::string named = name(channel);
      if (!named.empty()) codes += ' ' + std::to_string(channel.signal) + named.substr(named.find(':'), 3);
    }
    channel.signal = known;
    std::string first, last;
    for (channel.satellite = 0; channel.satellite < 256; ++channel.satellite) {
      const std::string named = name(channel);
      if (named.empty()) continue;
      last = named.substr(0, named.find(':'));
      if (first.empty()) first = last;
    }
    EXPECT_EQ(first + " to " + last + ':' + codes, expected);
  }
  ObservationEpoch epoch;
  EXPECT_FALSE(DecodeObservations(Range({{2, 0, 0, 0}, {1, 0, 0, 0, true, true, true, 100.0F, 45.0F, 1e9}}),
                                  history, epoch));
}

TEST(RawData, KnowsGpsAndSbasInABlockOfTwelveChannels) {
  const std::string block = Blocks(kObservations[0], 1).at(0);
  const std::pair<char, const char*> rows[] = {{'\x20', "G32:1C "}, {'\x21', ""},        {'\x77', ""},
                                               {'\x78', "S20:1C "}, {'\x9E', "S58:1C "}, {'\x9F', ""}};
  for (const auto& [satellite, name] : rows) {
    std::string changed = block;
    for (std::size_t channel = 0; channel < 11; ++channel) changed[20 + 24 * channel] = 0;
    changed.replace(20 + 24 * 11, 24, block, 20, 24);
    changed[20 + 24 * 11] = satellite;
    changed[21 + 24 * 11] = *name == 'G';  // the strength
    PhaseHistory history;
    ObservationEpoch epoch;
    EXPECT_EQ(DecodeObservations(WordsOf(Summed(changed)), history, epoch), *name != '\0');
    EXPECT_TRUE(epoch.signals.empty() || (epoch.signals[0].cn0 == 0.0) == (*name != 'G'));
    EXPECT_EQ(NamesOf(epoch), name);
  }
}

TEST(RawData, TellsTheChannelsOfGlonassAndPassesOverWhatWasNotMeasured) {
  PhaseHistory history;
  ObservationEpoch epoch;
  ASSERT_TRUE(DecodeObservations(Range({{38, 1, 1, 0}, {61, 13, 1, 5}, {39, 14, 1, 0}}), history, epoch));
  EXPECT_EQ(NamesOf(epoch), "R1:1C R24:2P R2:1C ");
  EXPECT_EQ(epoch.signals[0].glonass_channel, -6);
  EXPECT_EQ(epoch.signals[1].glonass_channel, 6);
  EXPECT_FALSE(epoch.signals[2].glonass_channel) << "there is none of that number";
  // What has no name, or was not measured, is passed over; of a signal that comes twice the stronger stays.
  ASSERT_TRUE(DecodeObservations(Range({{7, 0, 0, 0, true, true, true, 100.0F, 30.0F},
                                        {5, 0, 0, 30},
                                        {5, 0, 7, 0},
                                        {33, 0, 0, 0},
                                        {6, 0, 0, 0, false, true, false},
                                        {7, 0, 0, 0, true, false},
                                        {8, 0, 0, 0, false},
                                        {9, 0, 0, 0, true, true, false},
                                        {7, 0, 0, 0, true, true, true, 100.0F, 30.0F}}),
                                 history, epoch));
  EXPECT_EQ(NamesOf(epoch), "G7:1C G8:1C G9:1C ");
  const auto& [half, no_phase, no_code] = std::tie(epoch.signals[0], epoch.signals[1], epoch.signals[2]);
  EXPECT_TRUE(half.half_cycle && half.carrier_phase == 1.1e8 && half.doppler == -1000.0 && half.cn0 == 45.0);
  EXPECT_TRUE(no_phase.carrier_phase == 0.0 && no_phase.doppler == 0.0 && no_phase.pseudorange == 2.1e7);
  EXPECT_TRUE(no_code.carrier_phase == 1.1e8 && no_code.pseudorange == 0.0 && !no_code.half_cycle);
  EXPECT_FALSE(DecodeObservations(Range({}), history, epoch));
}

TEST(RawData, TellsWhetherAPhaseGoesOn) {
  PhaseHistory history;
  const auto is_slip = [&](double seconds, float lock, bool parity = true, std::uint16_t satellite = 5) {
    ObservationEpoch epoch;
    const Channel channel{satellite, 0, 0, 0, true, parity, true, lock};
    EXPECT_TRUE(DecodeObservations(Range({{30, 0, 0, 0}, channel}, seconds), history, epoch));
    return epoch.signals[1].slip;
  };
  EXPECT_TRUE(is_slip(0, 100.0F)) << "seen for the first time";
  EXPECT_FALSE(is_slip(1, 101.0F));
  EXPECT_FALSE(is_slip(2, 0.9F)) << "tracked ever since, as far as the receiver counts";
  EXPECT_TRUE(is_slip(3, 0.5F)) << "caught again in between";
  EXPECT_TRUE(is_slip(4, 1.5F, false)) << "half a cycle may have come in";
  EXPECT_TRUE(is_slip(5, 50.0F, true, 6)) << "another satellite";
  EXPECT_TRUE(is_slip(14, 9.0F, false)) << "out of sight for longer than it is tracked";
  EXPECT_FALSE(is_slip(20, 6.0F, false)) << "out of sight, and tracked all the while";
  EXPECT_TRUE(is_slip(19, 60.0F, false)) << "time has gone back";

  const std::string block = Blocks(kObservations[0], 1).at(0);
  ObservationEpoch epoch;
  for (const bool slips : {true, false, true}) {
    std::string next = block;
    next[23] = static_cast<char>(slips ? next[23] + 1 : next[23]);
    if (epoch.week != 0 && slips) next = Summed(next);
    ASSERT_TRUE(DecodeObservations(WordsOf(epoch.week != 0 && slips ? next : block), history, epoch));
    EXPECT_EQ(epoch.signals[0].slip, slips);
  }
  ASSERT_TRUE(DecodeObservations(WordsOf(block), history, epoch));
  // Ten seconds later each time, tracked for half a second or for longer than is counted.
  for (const bool is_long : {false, true}) {
    std::string next = block;
    next[22] = 5;
    next[24] = static_cast<char>(is_long ? next[24] | 2 : next[24] & ~2);
    double seconds = 0.0;
    std::memcpy(&seconds, &next[12], sizeof seconds);
    seconds += is_long ? 20.0 : 10.0;
    std::memcpy(&next[12], &seconds, sizeof seconds);
    ASSERT_TRUE(DecodeObservations(WordsOf(Summed(next)), history, epoch));
    EXPECT_EQ(epoch.signals[0].slip, !is_long);
  }
}

TEST(RawData, FillsTheRecordOfOlderReceiversWithTheStrongest) {
  std::vector<Channel> channels = {{3, 0, 0, 9}, {122, 0, 2, 0}};
  for (std::uint16_t prn = 1; prn <= 12; ++prn)
    channels.push_back({prn, 0, 0, 0, true, true, true, 9.0F, prn == 4 ? 30.0F : 40.4F});
  PhaseHistory history;
  ObservationEpoch epoch;
  ASSERT_TRUE(DecodeObservations(Range(channels), history, epoch));
  CGPSDataRaw raw;
  ASSERT_TRUE(ToDataRaw(epoch, raw) && raw.m_bEpochComplete);
  EXPECT_EQ(raw.GetNumSV(), 11);
  EXPECT_EQ(raw.m_nGPSWeek, 2314);
  EXPECT_EQ(raw.m_dReceiverTime, 1000.0);
  CGPSSatelliteDataRaw slot;
  ASSERT_TRUE(raw.GetSatelliteData(slot, 3));
  EXPECT_TRUE(slot.m_nPRN == 5 && slot.m_bValid && slot.m_nSignalCount == 40);
  EXPECT_TRUE(slot.m_dPseudorange == 2.1e7 && slot.m_dCarrierPhase == 1.1e8 && slot.m_dDoppler == -1000.0);
  epoch.signals = {epoch.signals[0], epoch.signals[1], epoch.signals.back()};
  EXPECT_TRUE(ToDataRaw(epoch, raw)) << "of one satellite";
  epoch.signals.pop_back();
  EXPECT_FALSE(ToDataRaw(epoch, raw));
}

}  // namespace
