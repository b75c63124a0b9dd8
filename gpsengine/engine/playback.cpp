#include "gpsengine/engine/readerthread.h"
#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/text/parser.h"
#include "gpsengine/text/textfile.h"

namespace {

constexpr DWORD kLinePace = 500;  // recordings have no timestamps
constexpr UINT kCannotPlayText = 12;
constexpr char kPauseWord[] = "QRV PAUSE";

bool IsFile(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path.GetString());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

CString CannotPlay(const CString& path) {
  CString text = LoadText(kCannotPlayText);
  text.Replace("%s", path);
  return text;
}

}  // namespace

void CReaderThread::PlayRecording() {
  const CString path = FindRecording();
  CTextFile file;
  if (file.Open(path.GetString(), CFile::typeText, nullptr) == 0) {
    AfxMessageBox(CannotPlay(path));
    return StopRun();
  }
  CString line;
  while (Pause(kLinePace) && ReadLine(file, line)) {
    if (line.StartsWith(kPauseWord)) {
      ShowPause(line);
    } else {
      line += "\r\n";
    }
    CBinBuffer bytes(line);
    if (const Step step(*this); step)
      step->UpdateGPSBuffer(bytes.GetData(), bytes.GetLength(), m_pRun->Ends());
  }
}

// Stops the engine from the run's own thread.
void CReaderThread::StopRun() {
  const Step step(*this);
  if (!step) return;
  step->EndRun();
  CGPSReceiver* const receiver = step.Receiver();
  const CEngineLease::Outside outside(*m_pLease);
  if (receiver != nullptr) receiver->Suspend();
}

CString CReaderThread::FindRecording() {
  CString path;
  CString fallback;
  if (const Step step(*this); step) {
    path = step->m_strEmulationFile;
    fallback = step->m_strEmulationDir + "Emulation.log";
  }
  return IsFile(path) ? path : fallback;
}

// Reads the next line, rewinding at the end of the file. False if the file has no lines.
bool CReaderThread::ReadLine(CTextFile& file, CString& line) {
  if (file.ReadString(line)) return true;
  file.SeekToBegin();
  return file.ReadString(line);
}

// Shows the text of a pause line, which stands after its first field, until the user continues.
void CReaderThread::ShowPause(const CString& line) {
  CParser parser(line, ",*", false);
  parser.SkipField();
  AfxMessageBox(parser.GetRemainingBuffer(), BoxKind::pause);
}
