// A host that brings a model of its own: a class with a name, a baud rate, what it can do and what goes over
// the line for it. Decoding is not among them, since every receiver understands every sentence.
//
// It switches all sentences but the position off and shows which kinds come before and after.
//   ownreceiver /dev/ttyUSB0
#include <cstdio>
#include <memory>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/clock.h"

// A receiver of an older firmware, whose commands the built-in models do not know.
class CAcme : public CGPSReceiver {
  DECLARE_DYNAMIC(CAcme)

 public:
  // The name under which hosts find it, and under which its baud rate is kept.
  CString GetName() override { return "Acme 12"; }
  int GetDefaultBaudrate() override { return 9600; }

  // What it can do, and how.
  bool ImplementsSetNmea() override { return true; }
  void SetGgaOnlyNMEA() override {
    // Each line with the milliseconds to wait after it. A line that lacks its end, is too long or has a
    // wrong checksum does not compile.
    static constexpr CGPSCommand kLines[] = {{"$PASHS,NME,ALL,A,OFF\r\n", 200},
                                             {"$PASHS,NME,GGA,A,ON\r\n", 200}};
    Write(kLines);
  }

  // Sees each message before the library, on the reader thread. What it leaves alone goes the usual way.
  bool Parse(CString& strMessage) override {
    if (strMessage.StartsWith("$PASHR,ACK")) ++m_nAcknowledged;
    return CGPSReceiver::Parse(strMessage);
  }
  int GetAcknowledged() const { return m_nAcknowledged; }

 private:
  CShared<int> m_nAcknowledged = 0;  // the reader thread counts, the host's thread reads
};

// Which kinds of sentence come within some seconds.
void ShowSentences(CGPSReceiver& receiver, const char* pszWhen) {
  receiver.MonitorNmea(true);  // forgets what has come until now
  Sleep(2500);
  std::printf("%s:%s%s%s\n", pszWhen, receiver.HaveGotNmea(GPS_STRING_GGA) ? " GGA" : "",
              receiver.HaveGotNmea(GPS_STRING_GSA) ? " GSA" : "",
              receiver.HaveGotNmea(GPS_STRING_VTG) ? " VTG" : "");
}

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: ownreceiver DEVICE\n"), 2;
  CWinApp app("ownreceiver");  // no main window: this host does not look at the records, which are freed

  CGPSEngine engine;
  auto own = std::make_unique<CAcme>();
  CAcme* receiver = own.get();
  if (!engine.AddReceiver(receiver)) return std::fprintf(stderr, "the name is taken\n"), 1;
  own.release();  // the engine's from here on

  MapComPort(1, argv[1]);
  receiver->SetupReceiver(1, 0, 0.0, "", false);
  engine.SetReceiver(engine.FindReceiver("Acme 12"));
  if (!engine.Start()) return std::fprintf(stderr, "%s\n", engine.GetLastErrorString().ToUtf8().c_str()), 1;

  ShowSentences(*receiver, "before");
  if (receiver->ImplementsSetNmea()) receiver->SetGgaOnlyNMEA();  // blocks for the sum of its waits
  ShowSentences(*receiver, "after");
  std::printf("%d commands acknowledged\n", receiver->GetAcknowledged());
}
