// The reports that read a receiver's settings back: what each changes in the status that the host gets.
#include <map>
#include <nlohmann/json.hpp>

#include "host/records/recordsink.h"
#include "tests/support/receivertest.h"

namespace {

class StatusReport : public ReceiverTest<> {
 protected:
  struct Row {
    const char* message;  // one that ends in "*" gets its checksum
    bool published;
    const char* changes;
  };

  /// The members of the status that are not as they were, with what they are. Of a report that publishes
  /// nothing they go out with an acknowledgement.
  void Check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      const auto before = Acknowledged();
      const std::string message = row.message;
      EXPECT_EQ(message.ends_with('*') ? FeedSentence(message.substr(0, message.size() - 1)) : Feed(message),
                row.published)
          << message;
      const auto after = row.published ? Members() : Acknowledged();
      std::string changes;
      for (const auto& [name, value] : after)
        if (value != before.at(name)) changes += (changes.empty() ? "" : " ") + name + '=' + value;
      EXPECT_EQ(changes, row.changes) << message;
    }
  }

 private:
  std::map<std::string, std::string> Acknowledged() {
    Feed("$PASHR,ACK*3D\r\n");
    return Members();
  }
  std::map<std::string, std::string> Members() const {
    std::string record;
    gps::FixReader reader;
    host::RecordSink(record).OnData(host::ReadRecord(reader, Last()));
    std::map<std::string, std::string> members;
    const auto parsed = nlohmann::json::parse(record);
    for (const auto& [name, value] : parsed["m_Status"].items()) members[name.substr(2)] = value.dump();
    members.erase("bAck");
    return members;
  }
};

TEST_F(StatusReport, OfABeaconReceiver) {
  Check({
      {"$CRMSS,45,20,304.5,200*", true,
       "bBeaconStatusValid=true dBeaconFrequency=304.5 nBeaconBitRate=200 nBeaconSNR=20 "
       "nBeaconSignalStrength=45"},
      {"$CRMSS,46,21,305.5*", false, "dBeaconFrequency=305.5 nBeaconSNR=21 nBeaconSignalStrength=46"},
      {"$GPMSS,46,21,305.5,100*", true, "bBeaconStatusValid=true nBeaconBitRate=100"},
      {"$CRMSK,304.5,A*", true, "bBeaconAutoTune=true bBeaconTuneValid=true"},
      {"$CRMSK,304.5,X*", true, "bBeaconTuneValid=true"},
      {"$GPMSK,304.5,M,100*", true, "bBeaconAutoTune=false bBeaconTuneValid=true"},
      {"$CRMSK,304.5,a*", true, "bBeaconTuneValid=true"},
      {"$CRMSK,,A*", true, "bBeaconAutoTune=true bBeaconTuneValid=true"},
      {"$CRMSK,304.5*", true, "bBeaconTuneValid=true"},
  });
}

// Of a line that ends too soon what was read is kept.
TEST_F(StatusReport, OfAParameterListing) {
  Check({
      {"PMD:1 ALT:+0123.45 PDP:40 HDP:04 VDP:05\r\n", true,
       "bPositionModeValid=true dFixedAltitude=123.45 nHDOPMask=4 nPDOPMask=40 nPositionMode=1 nVDOPMask=5"},
      {"PMD:2 ALT:-7.5 PDP:41 HDP:05\r\n", false,
       "dFixedAltitude=-7.5 nHDOPMask=5 nPDOPMask=41 nPositionMode=2"},
      {"PMD:3 ALT:high PDP:42\r\n", false, "nPositionMode=3"},
      {"PMD:4 ALT:+1 HDP:05 VDP:06\r\n", false, "dFixedAltitude=1 nPositionMode=4"},
      {"PMD:5 ALT:+2 PDP:43 VDP:06\r\n", false, "dFixedAltitude=2 nPDOPMask=43 nPositionMode=5"},
      {"PER:001.50\r\n", true, "dOutputInterval=1.5"},
      {"PER:abc\r\n", false, ""},
      {"PEM:05 SAV:Y\r\n", true, "bElevationMaskValid=true bMaskSaved=true nElevationMask=5"},
      {"PEM:05 SAV:N\r\n", true, "bElevationMaskValid=true bMaskSaved=false"},
      {"PEM:07\r\n", false, "nElevationMask=7"},
      {"PEM:x SAV:Y\r\n", false, ""},
      // 0 is on, 1 off. The states are read by place.
      {"PRTA:  9600 1.0 A ON -- OFFICE ONX -- -- ON OFF -- --  -- ON\r\n", true,
       "bNmeaStatusValid=true nNmeaGGA=1 nNmeaGLL=0 nNmeaGSA=0 nNmeaSAT=1 nNmeaVTG=0 nNmeaZDA=0"},
      {"PRTA: 9600 1.0 A OFF -- -- ON\r\n", false, "nNmeaGLL=1"},    // "--" where a state belongs
      {"PRTA:   9600 1.0 A OFF -- OFF ON -- -- ON\r\n", false, ""},  // three spaces: all is one on
      {"PRTA: 9600 1.0 A OFF -- on\r\n", false, "nNmeaGLL=1"},
      {"PRTA: 9600 1.0 A OFF -- ON\r\n", false, "nNmeaGGA=0 nNmeaGLL=1"},
  });
  CString listing("PRTA:  9600 1.0 A ON -- --  --\r\n");
  receiver.Parse(listing);
  EXPECT_EQ(listing, "PRTA: 9600 1.0 A ON -- -- --\r\n") << "what a capturing host sees";
}

TEST_F(StatusReport, OfStarlinkAndAxis) {
  Check({
      {"$PSLIR,PAR,NMEA,GGA:1.0,GSA:0,VTG:5,GLL:-1*", true,
       "bNmeaStatusValid=true nNmeaGGA=0 nNmeaGLL=1 nNmeaGSA=1 nNmeaVTG=0"},
      {"$PSLIR,PAR,NMEA,GGA:1.0,GSA:x,VTG:5*", false, "nNmeaGGA=0"},
      {"$PSLIR,PAR,NMEA*", true, "bNmeaStatusValid=true"},
      {"$PSLIR,PAR,MODE,ELM:10*", true, "bElevationMaskValid=true nElevationMask=10"},
      {"$PSLIR,PAR,MODE*", true, "bElevationMaskValid=true"},
      {"$PSLIR,PAR,MODE,ELM:x*", false, ""},
      {"$PMCAG,908,1,2,3,4,7.9*", true, "bElevationMaskValid=true nElevationMask=7"},
      {"$PMCAG,908,15,,,,12,,,,,,,,,,,*", true, "bElevationMaskValid=true nElevationMask=12"},
      {"$PMCAG,907,1,2,3,4,9.9*", false, ""},
      {"$PMCAG,907,1,2,3,4,7.9*", false, ""},
      {"$PMCAG,908,1,2,3,4*", false, ""},
      {"$PMCAG,908,1,2,3,4,1e300*", false, ""},
  });
  for (const GPSStringType kind : {GPS_STRING_PSLIR_NMEA, GPS_STRING_PSLIR_MODE}) {
    CString cut("$PSLIR,PAR");
    EXPECT_FALSE(receiver.Parse(cut, kind)) << "what is claimed to be one has its fields too";
  }
}

TEST_F(StatusReport, OfTheJLanguage) {
  Check({
      {"$>JSHOW,DIFF,BEACON", true, "bDgpsModeValid=true nDgpsMode=1"},
      {"$>JSHOW,DIFF,LBAND,1", true, "bDgpsModeValid=true nDgpsMode=2"},
      {"$>JSHOW,DIFF,WAAS\r\n", true, "bDgpsModeValid=true nDgpsMode=3"},
      {"$>JSHOW,DIFF,NONE", true, "bDgpsModeValid=true nDgpsMode=0"},
      {"$>JSHOW,DIFF,beacon", true, "bDgpsModeValid=true"},
      {"$>JSHOW,ASC,GPGGAx,1.0,PORTA\r\n", true, "bNmeaStatusValid=true nNmeaGGA=0"},
      {"$>JSHOW,ASC,GPGSA,1.0", true, "bNmeaStatusValid=true nNmeaGSA=0"},
      {"$>JSHOW,ASC,GPZDA,1.0", true, "bNmeaStatusValid=true nNmeaZDA=0"},
      {"$>JSHOW,ASC,GPGLL,1.0", true, "bNmeaStatusValid=true nNmeaGLL=0"},
      {"$>JSHOW,ASC,GPVTG,1.0", true, "bNmeaStatusValid=true nNmeaVTG=0"},
      {"$>JSHOW,ASC,GPGSV,1.0", true, "bNmeaStatusValid=true nNmeaGSV=0"},
      {"$>JSHOW,MASK,12\r\n", true, "bElevationMaskValid=true nElevationMask=12"},
      {"$>JSHOW,FREQ,0.0", true, "nLbandMode=1"},
      {"$>JSHOW,FREQ,1557.8450", true, "nLbandMode=2"},
      {"$>JI,412345,1,7\r\n", true, R"(bTextValid=true szText="$>JI,412345,1,7\r\n")"},
      {"$>JGEO,SENT=1575.42,USED=1575.42\r\n", true,
       R"(bTextValid=true szText="$>JGEO,SENT=1575.42,USED=1575.42\r\n")"},
      {"$RD1,314200,1450\r\n", true, R"(bTextValid=true szText="$RD1,314200,1450\r\n")"},
  });
  for (const char* bad :
       {"ASC,GPRMC", "ASC,GPSAT", "ASC,gpgga", "MASK,abc", "FREQ,abc", "FOO,1", "mask,9", "MASK", "FOO"})
    Check({{(std::string("$>JSHOW,") + bad).c_str(), false, ""}});
  Check({{"$>JSHOW", false, ""}});
}

TEST_F(StatusReport, OfTheLogsOfAGsr2650) {
  constexpr const char* kNames[] = {"GGA", "GLL", "GSA", "GSV", "SAT", "VTG", "ZDA"};
  for (const std::string on : kNames) {
    std::string states = "bNmeaStatusValid=true";
    for (const std::string name : kNames) states += " nNmea" + name + (name == on ? "=0" : "=1");
    Check({{("#LOGLISTA,COM1,0;2,COM1,GP" + on + "A,ONTIME*12345678\r\n").c_str(), true, states.c_str()}});
  }
  Check({
      {"#ECUTOFFA,COM1,0;5.0*ABCD\r\n", true, "bElevationMaskValid=true nElevationMask=5"},
      {"#ECUTOFFA,COM1,0;7.9*ABCD\r\n", true, "bElevationMaskValid=true nElevationMask=7"},
      {"#ECUTOFFA,COM1,0;x*ABCD\r\n", false, ""},
      {"#ECUTOFFA,COM1,0;9.0\r\n", false, ""},
      {"#ECUTOFFA,COM1,0*12\r\n", false, ""},
      {"#ECUTOFFA;1e300*12\r\n", false, ""},
      {"#OMNIINFOA,COM1;AAA,BBB*1234\r\n", true, R"(bTextValid=true szText="$OMNII,AAA,BBB*")"},
      {"#OMNISTATA,COM1;CCC*12\r\n", true, R"(bTextValid=true szText="$OMNIS,CCC*")"},
      {"#WAAS1A,COM1;122,ffffffff*12\r\n", true, R"(bTextValid=true szText="$WAAS1,122,ffffffff*")"},
      {"#OMNIHPPOSA,COM1;A,B,C,D,E,F,G*12\r\n", true, R"(bTextValid=true szText="$OMNIP,A,B,C,D,E,")"},
      {"#OMNIHPPOSA,COM1,1,2,3,4;A,B,C,D*12\r\n", true, R"(bTextValid=true szText="$OMNIP,")"},
      {"#OMNIINFOA,COM1;AAA,BBB\r\n", true, R"(bTextValid=true szText="$OMNII,")"},
      {"#WAAS1A,COM1,AAA*12\r\n", true, R"(bTextValid=true szText="$WAAS1,")"},
      {"#RTKSOURCEA,COM1;OMNISTAR,ANY*12\r\n", true, "bDgpsModeValid=true nDgpsMode=2"},
      {"#RTKSOURCEA,COM1;AUTO,ANY*12\r\n", true, "bDgpsModeValid=true nDgpsMode=1"},
      {"#RTKSOURCEA,COM1;NONE,ANY*12\r\n", false, ""},
      {"#RTKSOURCEA,COM1,AUTO,ANY*12\r\n", false, ""},
      {"#RTKSOURCEA,COM1;AUTO*12\r\n", false, ""},
      {"#PSRDIFFSOURCEA,COM1;OMNISTAR,ANY*12\r\n", true, "bDgpsModeValid=true nDgpsMode=5"},
      {"#PSRDIFFSOURCEA,COM1;CDGPS,ANY*12\r\n", true, "bDgpsModeValid=true nDgpsMode=4"},
      {"#PSRDIFFSOURCEA,COM1;AUTO,ANY*12\r\n", false, ""},
      {"#SBASCONTROLA,COM1;ENABLE,AUTO,0,NONE*12\r\n", true, "bDgpsModeValid=true nDgpsMode=3"},
      {"#SBASCONTROLA,COM1;ENABLE,WAAS,0,NONE*12\r\n", false, ""},
      {"#SBASCONTROLA,COM1;DISABLE,AUTO,0,NONE*12\r\n", false, ""},
      {"#RXCONFIGA,COM1;GPGGA*12\r\n", false, ""},
  });
}

}  // namespace
