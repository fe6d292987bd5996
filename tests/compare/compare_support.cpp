#include "compare_support.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <sstream>
#include <stdexcept>

#include "env/windows/window_base.h"

namespace {

// The built-in texts, as their bytes are given for the comparison job and the
// comparison window.
const std::map<std::string, std::string> &TextTable () {
  static const std::map<std::string, std::string> Table = {
    {"heading suffix", "20 2D 20 CE C4 BC FE BC D0 C4 DA C8 DD B1 E4 BB AF 21"},
    {"contents differ", "CE C4 BC FE C4 DA C8 DD B2 BB CD AC 21"},
    {"is a directory", "CE C4 BC FE CA C7 D2 BB B8 F6 C4 BF C2 BC"},
    {"file changed", "CE C4 BC FE B7 A2 C9 FA B1 E4 BB AF"},
    {"root missing", "CE C4 BC FE 28 25 61 29 B2 BB B4 E6 D4 DA 21"},
    {"root missing in backup", "CE C4 BC FE 28 25 61 29 D4 DA B1 B8 B7 DD D6 D0 B2 BB B4 E6 D4 DA 21"},
    {"root type differs", "CE C4 BC FE B1 B8 B7 DD 28 25 61 29 D3 D0 B2 BB CD AC B5 C4 C4 BF C2 BC CA F4 D0 D4 21"},
    {"root size differs", "CE C4 BC FE 28 25 61 29 B4 F3 D0 A1 B2 BB D2 BB D1 F9 21"},
    {"backup folder open failed", "B1 B8 B7 DD CE C4 BC FE BC D0 B4 F2 BF AA CA A7 B0 DC 21"},
    {"type differs", "BA CD B1 B8 B7 DD B2 BB CD AC B5 C4 CE C4 BC FE C0 E0 D0 CD 21"},
    {"source empty", "CE C4 BC FE BC D0 CE AA BF D5 A3 AC B1 B8 B7 DD D3 D0 25 64 B8 F6 CE C4 BC FE"},
    {"backup empty", "CE C4 BC FE BC D0 D0 C2 D4 F6 25 64 B8 F6 CE C4 BC FE A3 AC B1 B8 B7 DD CE C4 BC FE BC D0 CE AA BF D5"},
    {"compare failed", "CE C4 BC FE B1 C8 BD CF CA A7 B0 DC 21"},
    {"folder deleted", "CE C4 BC FE BC D0 B1 BB C9 BE B3 FD 21"},
    {"file deleted", "CE C4 BC FE B1 BB C9 BE B3 FD 21"},
    {"folder new", "D0 C2 D4 F6 CE C4 BC FE BC D0 21"},
    {"file new", "D0 C2 D4 F6 CE C4 BC FE 21"},
    {"cannot compare", "CE DE B7 A8 B1 C8 BD CF CE C4 BC FE"},
    {"file count", "20 28 25 64 B8 F6 CE C4 BC FE 29"},
    {"preparing", "D7 BC B1 B8"},
    {"folder mark", "20 28 CE C4 BC FE BC D0 29"},
    {"title prefix", "CE C4 BC FE B1 C8 BD CF 3A"},
    {"title joint", "20 BA CD 20"},
    {"result label", "B1 C8 BD CF BD E1 B9 FB 3A"},
    {"start failed", "CE C4 BC FE B1 C8 BD CF CA A7 B0 DC 21"},
    {"finished", "CE C4 BC FE B1 C8 BD CF BD E1 CA F8 A3 AC D7 DC B9 B2 B1 C8 BD CF C1 CB 25 64 B8 F6 CE C4 BC FE 21"},
    {"no differences", "CE C4 BC FE B1 C8 BD CF CE B4 B7 A2 CF D6 B2 BB CD AC 21"},
    {"added", "D0 C2 D4 F6 25 64 B8 F6 CE C4 BC FE 28 BC D0 29 21"},
    {"deleted", "C9 BE B3 FD C1 CB 25 64 B8 F6 CE C4 BC FE 28 BC D0 29 21"},
    {"changed", "25 64 B8 F6 CE C4 BC FE 28 BC D0 29 B7 A2 C9 FA B1 E4 BB AF 21"},
    {"menu: open folder", "B4 F2 BF AA CB F9 D4 DA CE C4 BC FE BC D0"},
    {"menu: open backup folder", "B4 F2 BF AA B1 B8 B7 DD CE C4 BC FE BC D0"},
    {"menu: delete file", "C9 BE B3 FD B5 B1 C7 B0 CE C4 BC FE"},
    {"menu: copy file", "B8 B4 D6 C6 B5 B1 C7 B0 CE C4 BC FE B5 BD BC F4 CC F9 B0 E5"},
    {"menu: copy backup file", "B8 B4 D6 C6 B1 B8 B7 DD CE C4 BC FE B5 BD BC F4 CC F9 B0 E5"},
  };
  return Table;
}

// Bytes written as hexadecimal pairs separated by spaces.
std::string FromHex (const std::string &Hex) {
  std::string Bytes;
  std::istringstream In (Hex);
  std::string Pair;
  while (In >> Pair) Bytes += static_cast<char> (std::stoi (Pair, nullptr, 16));
  return Bytes;
}

}  // namespace

std::string Text (const std::string &Name) {
  auto It = TextTable ().find (Name);
  if (It == TextTable ().end ()) throw std::runtime_error ("no text called " + Name);
  return FromHex (It->second);
}

std::string TextWith (const std::string &Name, const std::vector<std::string> &Args) {
  std::string Bytes = Text (Name);
  for (const std::string &Arg : Args) {
    size_t At = Bytes.find ('%');
    if (At == std::string::npos) throw std::runtime_error ("too many arguments for " + Name);
    Bytes.replace (At, 2, Arg);
  }
  return Bytes;
}

std::vector<Report> gReports;
COMPARE_RESULT *gFinalSnapshot = nullptr;
SURVEYOR_PROTOCOL *gProtocol = nullptr;

VOID EFIAPI ReportCallback (COMPARE_JOB *Job, CHAR8 *Line, UINT32 ItemCount, BOOLEAN Finished) {
  Report R;
  R.ItemCount = ItemCount;
  R.HasLine = Line != nullptr;
  if (Line != nullptr) R.Line = reinterpret_cast<const char *> (Line);
  R.Finished = Finished != 0;
  gReports.push_back (R);
  if (Finished && gProtocol != nullptr) {
    if (gFinalSnapshot != nullptr) gProtocol->FreeCompareSnapshot (gFinalSnapshot);
    gFinalSnapshot = gProtocol->SnapshotCompareResult (Job);
  }
}

std::vector<StoredEntry> StoredEntries (const COMPARE_RESULT *Result) {
  std::vector<StoredEntry> Out;
  for (unsigned I = 0; Result != nullptr && I < Result->EntryCount; I++) {
    const RESULT_ENTRY &E = Result->Entries[I];
    Out.push_back ({E.Name ? reinterpret_cast<const char *> (E.Name) : "(null)", E.IsDirectory, E.Code, E.IsHeading,
                    E.Link});
  }
  return Out;
}

std::ostream &operator<< (std::ostream &Out, const StoredEntry &E) {
  return Out << "{" << ::testing::PrintToString (E.Name) << " dir " << E.IsDirectory << " code " << E.Code
             << " heading " << E.IsHeading << " link " << E.Link << "}";
}

std::string Totals (const COMPARE_RESULT *R) {
  return "total " + std::to_string (R->TotalCount) + " deleted " + std::to_string (R->DeletedCount) + " added " +
         std::to_string (R->AddedCount) + " changed " + std::to_string (R->ChangedCount) + " entries " +
         std::to_string (R->EntryCount);
}

void CompareTest::SetUp () {
  DriverTest::SetUp ();
  gReports.clear ();
  gFinalSnapshot = nullptr;
  gProtocol = Surveyor ();
  Src = MakeVolume ("source");
  Bak = MakeVolume ("backup");
}

void CompareTest::TearDown () {
  if (gFinalSnapshot != nullptr) {
    gProtocol->FreeCompareSnapshot (gFinalSnapshot);
    gFinalSnapshot = nullptr;
  }
  gProtocol = nullptr;
  DriverTest::TearDown ();
}

void CompareTest::Put (int Volume, const std::string &Relative, const std::string &Bytes, time_t When, long Nanos) {
  WriteFile (Volume, Relative, Bytes);
  struct timespec Times[2] = {{When, Nanos}, {When, Nanos}};
  std::string Host = (VolumePath (Volume) / Relative).string ();
  ASSERT_EQ (utimensat (AT_FDCWD, Host.c_str (), Times, 0), 0) << Host;
}

void CompareTest::Both (const std::string &Relative, const std::string &Bytes, time_t When) {
  Put (Src, Relative, Bytes, When);
  Put (Bak, Relative, Bytes, When);
}

COMPARE_JOB *CompareTest::Start (const std::string &Path) {
  return Surveyor ()->StartCompareJobWithCallback (static_cast<UINT8> (Src), static_cast<UINT8> (Bak),
                                                   reinterpret_cast<const CHAR8 *> (Path.c_str ()), ReportCallback);
}

const COMPARE_RESULT *CompareTest::Compared (const std::string &Path) {
  gReports.clear ();
  if (Start (Path) != nullptr && RunToEnd () > 0) return gFinalSnapshot;
  ADD_FAILURE () << Path << " did not run to its end";
  return nullptr;
}

int CompareTest::RunToEnd (int Limit) {
  for (int Tick = 1; Tick <= Limit; Tick++) {
    Env ().windows ().RunTimerTick ();
    if (!gReports.empty () && gReports.back ().Finished) return Tick;
  }
  return -1;
}

std::vector<std::string> CompareTest::Lines () const {
  std::vector<std::string> Out;
  for (const Report &R : gReports)
    if (!R.Finished) Out.push_back (R.Line);
  return Out;
}

size_t CompareTest::LiveJobs () { return Env ().windows ().TimerCount (); }
