#include <limits>

#include "gpsengine/face/skysource.h"
#include "gpsengine/sentences/datescan.h"
#include "host/records/format.h"
#include "host/records/gpsdsink.h"
#include "host/records/jsonwriter.h"
#include "host/records/lastposition.h"
#include "host/records/recordsink.h"
#include "host/records/textsink.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

constexpr Moment kMidday{std::chrono::milliseconds(1715688000000)};  // 2024-05-14 12:00 UTC

Record RecordOf(const CGPSData& data) {
  FixReader epochs;
  return ReadRecord(epochs, data);
}

/// A fix with a table of two satellites, as the last sentence of a group leaves it.
CGPSData Group() {
  CGPSData data = FixRecord();
  data.m_bPositionValid = false;
  data.m_bSatellitesComplete = data.m_bSatellitesChanged = true;
  data.m_Satellites[0] = {45.0 * kDegree, 180.0 * kDegree, 7, true, true, 41};
  data.m_Satellites[3] = {5.0 * kDegree, 359.0 * kDegree, 40, false, true, 0};
  data.m_Satellites[5] = {5.0 * kDegree, 0.0, 9, false, false, 0};  // left over from an earlier group
  return data;
}

/// What a format makes of records and their satellites.
class Lines {
 public:
  explicit Lines(Format format, Geoid geoid = Geoid::none) : sink_(MakeSink(format, out_, "dev", geoid)) {
    sink_->SetReference(kMidday);
    epochs_.SetReference(kMidday);
  }
  std::string Of(const CGPSData& data) {
    out_.clear();
    shown = sink_->OnData(ReadRecord(epochs_, data));
    Show(skies_.OnData(data));
    return OfText("");
  }
  /// Of the text that comes after.
  std::string OfText(std::string_view text) {
    const Fields sentence(text);
    Show(skies_.OnText(sentence));
    if (sentence) sink_->OnSentence(sentence);
    sink_->OnString(CString(text.data(), static_cast<int>(text.size())));
    return std::exchange(out_, {});
  }
  bool shown = false;

 private:
  void Show(const Sky* sky) {
    if (sky != nullptr) sink_->OnSky(*sky);
  }

  std::string out_;
  std::unique_ptr<Sink> sink_;
  FixReader epochs_;
  SkySource skies_;
};

}  // namespace

TEST(HostJsonWriter, WritesNumbersThatReadBackAndTextThatIsUtf8) {
  std::string out;
  JsonWriter json(out);
  json.BeginArray();
  for (const double value : {0.1, -0.0, 1e300, 20.0, std::nan(""), std::numeric_limits<double>::infinity()})
    json.Value(value);
  json.Value(std::int16_t{-7});
  json.Value(true);
  json.Text(std::string_view("a\"\\\r\n\t\x01\x7F\xE9\0z", 11));
  json.EndArray();
  EXPECT_EQ(out, R"([0.1,-0,1e+300,20,null,null,-7,true,"a\"\\\r\n\t\u0001\u007f)"
                 "\xC3\xA9"
                 R"(\u0000z"])");
}

TEST(HostText, WritesInTheUnitsAndAnglesThatAreAskedFor) {
  CGPSData data = FixRecord();
  data.m_dLatitude = -9.9999999999 * kDegree;
  data.m_dLongitude = 122.5125 * kDegree;
  data.m_dAltitude = 100.0;
  data.m_dSpeed = 10.0;
  const std::tuple<Units, AngleFormat, const char*, const char*> rows[] = {
      {Units::metric, AngleFormat::degrees, "  10.0000000S  122.5125000E    100.0 m ", " 36.0 km/h"},
      {Units::imperial, AngleFormat::minutes, "  10 00.00000S  122 30.75000E    328.1 ft ", " 22.4 mph"},
      {Units::nautical, AngleFormat::seconds, "  10 00 00.0000S  122 30 45.0000E    328.1 ft ", " 19.4 kn"}};
  for (const auto& [units, angles, place, speed] : rows) {
    std::string out;
    MakeSink(Format::text, out, "", Geoid::none, {units, angles, nullptr})->OnData(RecordOf(data));
    EXPECT_TRUE(Has(out, place) && Has(out, speed)) << out;
  }
}

TEST(HostJsonWriter, RoundsFixedDecimals) {
  std::string out;
  for (const auto& [value, decimals] : {std::pair(1.0049, 2),
                                        {-1.005, 1},
                                        {-0.0004, 3},
                                        {0.05, 1},
                                        {-0.96, 1},
                                        {7.0, 0},
                                        {1e20, 1},
                                        {-87.06808, 9}}) {
    AppendFixed(out, value, decimals);
    out += ' ';
  }
  EXPECT_EQ(out, "1.00 -1.0 0.000 0.1 -1.0 7 100000000000000000000.0 -87.068080000 ");
}

TEST(HostMoment, GivesATimeOfDayTheNearestDate) {
  const Moment midnight = kMidday + kDay / 2;
  std::string out;
  for (const auto& [seconds, near] : {std::pair{86399.5, midnight + std::chrono::seconds(1)},
                                      {0.25, midnight - std::chrono::seconds(1)},
                                      {0.0, kMidday},
                                      {0.0, kMidday + kDay}}) {
    AppendIso(out, DateTimeOfDay(seconds, near));
  }
  EXPECT_EQ(
      out,
      "2024-05-14T23:59:59.500Z2024-05-15T00:00:00.250Z2024-05-14T00:00:00.000Z2024-05-15T00:00:00.000Z");
}

TEST(HostMoment, GoesOnWithTheDaysThatPassWhileAReceiverIsSilent) {
  FixReader reader;
  reader.SetReference(kMidday);
  CGPSData data = FixRecord();
  const auto first = *reader.Read(data).time;
  data.m_Time = CTime(data.m_Time.GetTime() + 3 * 86'400);
  EXPECT_EQ(*reader.Read(data).time - first, 3 * kDay);
  for (const double none : {-1.0, 86'401.0, std::nan("")}) {
    data.m_dTimeOfDay = none;
    EXPECT_FALSE(reader.Read(data).time) << none;
  }
}

TEST(HostMoment, FindsTheDateOfARecordingHoweverItIsCut) {
  const std::string unfixed = WithChecksum("$GPRMC,120001,V,,,,,,,010199,,"),  // its clock may tell anything
      older = WithChecksum("$GPZDA,000001.00,15,05,1999,00,00");
  const std::string stream =
      "noise$" +  // the first one is longer than the standard allows
      WithChecksum("$GNRMC,120000.00,A,4807.00000000,N,01131.00000000,E,0.000,000.000,140524,11.5982,E,D") +
      unfixed + "$GPZDA,120000,15,05,2031,00,00*00\r\n";  // broken
  for (const std::size_t cut : {std::size_t{1}, std::size_t{13}, stream.size()}) {
    DateScan scan;
    scan.Feed(WithChecksum("$GPRMC,120001,V,,,,,,,010198,,") +
              unfixed.substr(0, unfixed.size() - 2));  // its line end is not waited for
    EXPECT_EQ(scan.Latest(), Moment(std::chrono::milliseconds(915192001000)))
        << "as long as there is no other";
    for (std::size_t i = 0; i < stream.size(); i += cut) scan.Feed(std::string_view(stream).substr(i, cut));
    EXPECT_EQ(scan.Latest(), kMidday) << "after a stray dollar sign";
    scan.Feed(unfixed);
    EXPECT_EQ(scan.Latest(), kMidday) << "a date with a fix is better than one without";
    scan.Feed(older);
    EXPECT_EQ(scan.Latest(), Moment(std::chrono::milliseconds(926726401000)));
  }
  // In a piece of many lines, most of them without a date: before, after or between those, and cut in two.
  std::string lines;
  while (lines.size() < 4000) lines += WithChecksum("$GPGGA,120002,,,,,0,00,,,M,,M,,");
  const std::string all = lines + stream + lines;
  const std::pair<std::string, std::size_t> pieces[] = {{older + stream + lines, 0},
                                                        {lines + stream, 0},
                                                        {stream + lines + unfixed, 0},
                                                        {all, lines.size() + 40},
                                                        {all, lines.size() + stream.size() - 90}};
  for (const auto& [bytes, cut] : pieces) {
    DateScan scan;
    scan.Feed(bytes.substr(0, cut));
    scan.Feed(bytes.substr(cut));
    EXPECT_EQ(scan.Latest(), kMidday) << bytes.size() << ' ' << cut;
  }
  DateScan none;
  none.Feed(WithChecksum("$GPZDA,120000,31,02,2024,00,00") + WithChecksum("$GPZDA,120000,05,01,1979,00,00"));
  EXPECT_FALSE(none.Latest()) << "which were no days, or before there was GPS";
  for (const auto& [date, iso] : {std::pair("060180", "1980-01-06T00"), {"311279", "2079-12-31T00"}}) {
    DateScan scan;
    scan.Feed(WithChecksum(std::string("$GPRMC,000000,A,4807.0,N,01131.0,E,0,0,") + date + ",,"));
    std::string out;
    AppendIso(out, scan.Latest().value());
    EXPECT_TRUE(out.starts_with(iso)) << out;
  }
}

TEST(HostRecordFormat, WritesTheFieldsOfAPositionUnderTheirNames) {
  CGPSData data;
  data.m_dLatitude = 0.5;
  data.m_dHDOP = std::nan("");
  data.m_Time = CTime(4000000000);
  data.m_nSignalType = UDF_SIGNAL_RTK_FIXED;
  data.m_bPositionValid = true;
  data.m_Satellites[0].m_nPRN = 31;
  std::memset(data.m_szProprietary, 'x', sizeof data.m_szProprietary);
  const std::string record = Lines(Format::record).Of(data);
  EXPECT_TRUE(record.starts_with(
      R"({"message":"WM_GPS_NEW_DATA","m_dLatitude":0.5,"m_dLongitude":0,"m_dAltitude":0,"m_dHDOP":null,"m_dPDOP":0,)"
      R"("m_dVDOP":0,"m_dAverageSNR":0,"m_Time":4000000000,"m_Satellites":[{"m_dElevation":0,"m_dAzimuth":0,)"
      R"("m_nPRN":31,"m_bUsed":false,"m_bInView":false,"m_nSNR":0},{)"))
      << record;
  EXPECT_EQ(Count(record, "m_nPRN"), 12);
  EXPECT_TRUE(Has(
      record,
      R"(],"m_nSatellitesUsed":0,"m_nSatellitesInView":0,"m_nSignalType":6,"m_dHeading":0,"m_dSpeed":0,)"
      R"("m_bPositionValid":true,"m_bVelocityValid":false,"m_bDOPValid":false,"m_bSatellitesComplete":false,)"
      R"("m_bSatellitesChanged":false,"m_bProprietaryValid":false,"m_dTimeOfDay":0,"m_dLocalNorth":0,)"
      R"("m_dLocalEast":0,"m_szProprietary":")" +
          std::string(79, 'x') + R"(","m_Status":{"m_bStatusUpdated":false,)"));
}

TEST(HostFormats, ShowWhatABlockHolds) {
  rawdata::ObservationEpoch epoch{266, 172800.5, {}};
  epoch.signals.push_back({'G', 5, "1C", 2.1e7, -1.5, 1000.25, 45.5, true, false, {}});
  epoch.signals.push_back({'S', 22, "1C", 3.7e7, 0.0, 0.0, 0.0, true, true, {}});
  epoch.signals.push_back({'R', 24, "2P", 0.0, 9.0, 0.0, 40.0, false, false, -7});
  rawdata::BroadcastEphemeris ephemeris;
  ephemeris.orbit.m_nPRN = 5;
  ephemeris.orbit.m_nWeek = 266;
  ephemeris.accuracy = 2.8;
  const Block observed{{rawdata::Family::bin, 96}, 312, &epoch, nullptr};
  const Block told{{rawdata::Family::oem, 41}, 134, nullptr, &ephemeris};
  std::string record;
  EXPECT_TRUE(RecordSink(record).OnBin(observed));
  EXPECT_TRUE(record.starts_with(
      R"({"message":"WM_GPS_NEW_BIN","block":"$BIN 96","bytes":312,"observations":{"week":266,)"
      R"("time_of_week":172800.5,"signals":[{"system":"G","satellite":5,"code":"1C","pseudorange":2.1e+07,)"
      R"("carrier_phase":-1.5,"doppler":1000.25,"cn0":45.5,"slip":true,"half_cycle":false},{"system":"S",)"));
  EXPECT_TRUE(record.ends_with("\"glonass_channel\":-7}]}}\n")) << record;
  record.clear();
  EXPECT_TRUE(RecordSink(record).OnBin(told));
  EXPECT_TRUE(
      Has(record, R"("ephemeris":{"orbit":{"m_nPRN":5,"m_nWeek":266)", R"(},"accuracy":2.8,"health":0,)"));

  std::string json;
  GpsdSink sink(json, "", Geoid::none);
  sink.SetReference(kMidday);
  EXPECT_FALSE(sink.OnBin(Block()));
  EXPECT_TRUE(sink.OnBin(observed));
  EXPECT_EQ(json, R"({"class":"RAW","week":2314,"tow":172800.500,"rawdata":[{"PRN":5,"gnssid":0,"svid":5,)"
                  R"("obs":"L1C","pseudorange":21000000.000,"carrierphase":-1.500,"doppler":1000.250,)"
                  R"("snr":45.500,"lli":1},{"PRN":35,"gnssid":1,"svid":122,"obs":"L1C",)"
                  R"("pseudorange":37000000.000},{"PRN":88,"gnssid":6,"svid":24,"obs":"L2P",)"
                  R"("carrierphase":9.000,"snr":40.000,"freqid":-7}]})"
                  "\n");
  json.clear();
  EXPECT_TRUE(sink.OnBin(told));
  EXPECT_TRUE(json.starts_with(R"({"class":"EPHEMERIS","PRN":5)")) << json;

  std::string out;
  TextSink text(out, TextSink::Shows::fixes);
  epoch.signals.push_back(epoch.signals[0]);
  EXPECT_FALSE(text.OnBin(Block()));
  EXPECT_TRUE(text.OnBin(observed));
  EXPECT_EQ(out, "raw epoch: week 266 172800.500 s, 3 satellites: G05 S22 R24\n");
  for (const char system : {'E', 'C', 'J', 'I'})
    epoch.signals.push_back({system, 3, "1C", 2.1e7, 0.0, 0.0, 0.0, true, false, {}});
  sink.OnBin(observed);
  EXPECT_TRUE(Has(json, R"("PRN":303,"gnssid":2,)", R"("PRN":403,"gnssid":3,)", R"("PRN":195,"gnssid":5,)",
                  R"("PRN":503,"gnssid":7,)"));
}

TEST(HostJsonFormat, WritesAPositionAsTpv) {
  Lines json(Format::json);
  EXPECT_EQ(
      json.Of(FixRecord()),
      R"({"class":"TPV","device":"dev","mode":3,"time":"2024-05-14T12:35:19.250Z","status":2,"lat":48.117300000,)"
      R"("lon":-11.500000000,"altMSL":545.4000,"track":225.0000,"speed":5.000})"
      "\n");
  CGPSData still = FixRecord();
  still.m_dSpeed = still.m_dHeading = 0.0;
  EXPECT_FALSE(Has(json.Of(still), "track")) << "the direction east of a receiver at rest is none";
  CGPSData none = FixRecord();
  none.m_nSignalType = UDF_SIGNAL_NONE;
  none.m_dTimeOfDay = 0.0;
  none.m_bDOPValid = false;
  EXPECT_EQ(json.Of(none), "{\"class\":\"TPV\",\"device\":\"dev\",\"mode\":1}\n");
}

TEST(HostJsonFormat, WritesEachGroupOfSatellitesOnce) {
  Lines json(Format::json);
  const std::string sky =
      R"({"class":"SKY","device":"dev","time":"2024-05-14T12:35:19.250Z","hdop":0.90,"nSat":11,"uSat":8,"satellites":[)"
      R"({"PRN":7,"gnssid":0,"svid":7,"el":45.0,"az":180.0,"ss":41,"used":true},)"
      R"({"PRN":40,"gnssid":1,"svid":127,"el":5.0,"az":359.0,"used":false}]})"
      "\n";
  EXPECT_EQ(json.Of(Group()), sky);
  CGPSData next = Group();
  next.m_bPositionValid = true;
  EXPECT_FALSE(Has(json.Of(next), "SKY"));
  EXPECT_EQ(json.Of(Group()), sky) << "the next group, though nothing has changed";
}

TEST(HostJsonFormat, SaysNothingOfSatellitesUntilTheReceiverDoes) {
  Lines json(Format::json);
  CGPSData data = Group();
  data.m_nSatellitesUsed = 0;
  data.m_Satellites[0].m_bUsed = false;
  const std::string silent = json.Of(data);
  EXPECT_FALSE(Has(silent, "\"used\"") || Has(silent, "\"uSat\""));
  json.Of(Group());
  EXPECT_TRUE(Has(json.Of(data), "\"used\":false", "\"uSat\":0")) << "a fix was lost";
  Lines without(Format::json);
  EXPECT_FALSE(Has(without.Of(FixRecord()), "SKY")) << "satellites may follow";
  EXPECT_TRUE(without.Of(FixRecord()).ends_with("19.250Z\",\"hdop\":0.90,\"uSat\":8}\n"));
}

TEST(HostJsonFormat, WritesTheErrorsOfAPosition) {
  Lines json(Format::json);
  EXPECT_EQ(
      json.OfText(WithChecksum("$GNGST,123519.25,8.5,,,45,2.3,3.5,-")),
      R"({"class":"GST","device":"dev","time":"2024-05-14T12:35:19.250Z","rms":8.500,"orient":45.000,"lat":2.300,"lon":3.500})"
      "\n");
  EXPECT_EQ(json.OfText("$GNGST,123519.25,8.5,,,,2.3,3.5,4*00"), "");
  CGPSData late = FixRecord();
  late.m_dTimeOfDay = 86'399.0;
  json.Of(late);
  EXPECT_TRUE(Has(json.OfText(WithChecksum("$GNGST,000001,8.5,,,,,,")), "2024-05-15"));
}

TEST(HostJsonFormat, TellsHowOldThePositionIs) {
  LastPosition::Clock::time_point now;
  LastPosition last([&] { return now; });
  const auto told = [&] {
    std::string out;
    JsonWriter json(out);
    json.BeginObject();
    last.Write(json);
    json.EndObject();
    return out;
  };
  EXPECT_EQ(told(), "{}");
  FixReader epochs;
  CGPSData data = FixRecord();
  last.Note(ReadRecord(epochs, data));
  EXPECT_TRUE(last.TakeNews());
  now += std::chrono::seconds(60);
  data.m_nSignalType = UDF_SIGNAL_NONE;
  last.Note(ReadRecord(epochs, data));
  now += std::chrono::milliseconds(500);
  const CGPSData group = Group();
  last.Note(ReadRecord(epochs, group));
  EXPECT_EQ(told(), R"({"fix":"no fix","fixAge":60.5,"positionAge":0.5})");
  EXPECT_TRUE(last.TakeNews());
}

TEST(HostFormats, ShowWhatReportsHaveNewsOf) {
  CGPSData data;
  CGPSStatusData& status = data.m_Status;
  data.m_bProprietaryValid = true;
  std::strcpy(data.m_szProprietary, "$PX,1\r\n");
  status.m_bStatusUpdated = status.m_bAck = status.m_bBeaconStatusValid = status.m_bBeaconTuneValid =
      status.m_bElevationMaskValid = status.m_bMaskSaveValid = status.m_bMaskSaved =
          status.m_bNmeaStatusValid = status.m_bDgpsModeValid = true;
  status.m_nBeaconSignalStrength = 41;
  status.m_nBeaconSNR = 22;
  status.m_dBeaconFrequency = 304.5;
  status.m_nElevationMask = 5;
  status.m_nNmeaGGA = status.m_nNmeaGSA = status.m_nNmeaZDA = NMEA_MSG_ON;
  status.m_nNmeaGLL = status.m_nNmeaVTG = status.m_nNmeaGSV = NMEA_MSG_OFF;
  status.m_dOutputInterval = 0.5;
  status.m_nDgpsMode = DGPS_MODE_WAAS;
  status.m_nLbandMode = 1;
  status.SetText("$>JI,1\x1B\r\n", 9);
  EXPECT_EQ(
      Lines(Format::json).Of(data),
      R"({"class":"STATUS","device":"dev","proprietary":"$PX,1","ack":true,"text":"$>JI,1\u001b",)"
      R"("beaconSignalStrength":41,"beaconSNR":22,"beaconFrequency":304.5,"beaconBitRate":0,)"
      R"("beaconAutoTune":false,"elevationMask":5,"maskSaved":true,"nmeaGGA":"on","nmeaGSA":"on","nmeaZDA":"on",)"
      R"("nmeaGLL":"off","nmeaVTG":"off","nmeaGSV":"off","outputInterval":0.5,)"
      R"("dgpsMode":"waas","lbandMode":"automatic"})"
      "\n");
  status.m_nDgpsMode = static_cast<DgpsMode>(6);
  status.m_nLbandMode = 2;
  status.m_nNmeaSAT = NMEA_MSG_ON;
  std::strcpy(data.m_szProprietary, "\r\n");
  EXPECT_EQ(
      Lines(Format::text).Of(data),
      "report: sentence , acknowledged yes, text $>JI,1?, beacon signal strength 41, beacon SNR 22, "
      "beacon frequency 304.5 kHz, beacon bit rate 0, beacon automatic tuning no, elevation mask 5 deg, mask "
      "saved yes, GGA on, GSA on, ZDA on, GLL off, VTG off, SAT on, GSV off, "
      "output interval 0.5 s, differential source unknown, L-band tuning fixed\n");
}

TEST(HostFormats, TellARepeatedPositionModeOnce) {
  CGPSData data;
  data.m_Status.m_bStatusUpdated = data.m_Status.m_bPositionModeValid = true;
  Lines text(Format::text);
  EXPECT_NE(text.Of(data), "");
  EXPECT_EQ(text.Of(data), "");
  EXPECT_FALSE(text.shown);
  CGPSStatusData& status = data.m_Status;
  std::tie(status.m_nPositionMode, status.m_dFixedAltitude, status.m_nPDOPMask, status.m_nHDOPMask,
           status.m_nVDOPMask) = std::tuple(1, 2.5, 3, 4, 5);
  EXPECT_TRUE(Has(Lines(Format::json).Of(data),
                  R"("positionMode":1,"fixedAltitude":2.5,"pdopMask":3,"hdopMask":4,"vdopMask":5})"));
  EXPECT_EQ(text.Of(data),
            "report: position mode 1, fixed altitude 2.5 m, PDOP mask 3, HDOP mask 4, VDOP mask 5\n");
}

TEST(HostTextFormat, WritesALineAFix) {
  Lines text(Format::text);
  EXPECT_EQ(text.Of(FixRecord()),
            "12:35:19.25  SBAS       48.1173000N   11.5000000W    545.4 m    8/11 satellites  HDOP 0.9   "
            "18.0 km/h  225 "
            "deg\n");
  CGPSData none = FixRecord();
  none.m_nSignalType = UDF_SIGNAL_NONE;
  none.m_dTimeOfDay = 0.0;
  none.m_bDOPValid = false;
  EXPECT_EQ(text.Of(none), "--:--:--.--  no fix       8/11 satellites\n");
  EXPECT_EQ(text.Of(Group()), "");
  EXPECT_FALSE(text.shown);
}
