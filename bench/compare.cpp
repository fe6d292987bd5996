// The backup check side by side with the standard tools, as whole processes:
// `surveyor compare` beside `rsync -rn --delete` (the quick check),
// `diff -rq` (contents compared) and `cmp` (one large pair), on trees made
// for the run. Each pair of commands runs in turn, several times; the table
// gives the medians of wall time, their ratio, and the peak memory of each.
//
//   bench_compare [--quick]     (--quick: fewer rounds and no 100,000-file tree)
//
// Needs rsync, diff and cmp on the PATH (scripts/setup.sh installs rsync).
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/driver_fixture.h"

namespace {

namespace fs = std::filesystem;

constexpr time_t kTime = 1700000000;

struct Run {
  double Seconds = 0;
  long PeakKb = 0;
  int Status = -1;
};

// Runs a command (no shell), its output thrown away.
Run Execute (const std::vector<std::string> &Command) {
  std::vector<char *> Argv;
  for (const std::string &Word : Command) Argv.push_back (const_cast<char *> (Word.c_str ()));
  Argv.push_back (nullptr);
  auto Begin = std::chrono::steady_clock::now ();
  pid_t Child = ::fork ();
  if (Child == 0) {
    int Null = ::open ("/dev/null", O_WRONLY);
    ::dup2 (Null, STDOUT_FILENO);
    ::dup2 (Null, STDERR_FILENO);
    ::execvp (Argv[0], Argv.data ());
    ::_exit (127);
  }
  int Raw = 0;
  struct rusage Usage {};
  ::wait4 (Child, &Raw, 0, &Usage);
  Run Out;
  Out.Seconds = std::chrono::duration<double> (std::chrono::steady_clock::now () - Begin).count ();
  Out.PeakKb = Usage.ru_maxrss;
  Out.Status = WIFEXITED (Raw) ? WEXITSTATUS (Raw) : -1;
  return Out;
}

double Median (std::vector<double> Values) {
  std::sort (Values.begin (), Values.end ());
  size_t N = Values.size ();
  return N % 2 ? Values[N / 2] : (Values[N / 2 - 1] + Values[N / 2]) / 2;
}

struct Result {
  double Ours = 0, Theirs = 0;   // median seconds
  long OursKb = 0, TheirsKb = 0;
};

// Runs the two commands in turn Rounds times, after one run of each to warm
// the caches, and prints the line of Case; both must end with one of their
// accepted statuses.
Result SideBySide (const std::string &Case, const std::vector<std::string> &Ours, std::vector<int> OursOk,
                   const std::vector<std::string> &Theirs, std::vector<int> TheirsOk, int Rounds) {
  Execute (Ours);
  Execute (Theirs);
  std::vector<double> A, B;
  Result R;
  for (int I = 0; I < Rounds; I++) {
    Run X = Execute (Ours), Y = Execute (Theirs);
    if (std::find (OursOk.begin (), OursOk.end (), X.Status) == OursOk.end () ||
        std::find (TheirsOk.begin (), TheirsOk.end (), Y.Status) == TheirsOk.end ())
      std::fprintf (stderr, "%s: unexpected exit status (surveyor %d, %s %d)\n", Case.c_str (), X.Status,
                    Theirs[0].c_str (), Y.Status);
    A.push_back (X.Seconds);
    B.push_back (Y.Seconds);
    R.OursKb = std::max (R.OursKb, X.PeakKb);
    R.TheirsKb = std::max (R.TheirsKb, Y.PeakKb);
  }
  R.Ours = Median (A);
  R.Theirs = Median (B);
  std::printf ("%-46s %9.3f s %9.3f s %6.2fx  %7ld KiB %7ld KiB  (%s)\n", Case.c_str (), R.Ours, R.Theirs,
               R.Ours / R.Theirs, R.OursKb, R.TheirsKb, Theirs[0].c_str ());
  std::fflush (stdout);
  return R;
}

void WriteFile (const fs::path &Path, const std::string &Bytes) {
  int Fd = ::open (Path.c_str (), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (Fd < 0 || ::write (Fd, Bytes.data (), Bytes.size ()) != static_cast<ssize_t> (Bytes.size ())) {
    std::perror (Path.c_str ());
    std::exit (1);
  }
  struct timespec Times[2] = {{kTime, 0}, {kTime, 0}};
  ::futimens (Fd, Times);
  ::close (Fd);
}

// Folders × Files files of about 200 bytes on both sides; every Every-th
// file is longer in the source (about 1% of them with Every = 100).
void MakeTree (const fs::path &Source, const fs::path &Backup, int Folders, int Files, int Every) {
  std::string Content (200, 'x');
  int Number = 0;
  for (int F = 0; F < Folders; F++) {
    fs::path Sub = Folders == 1 ? fs::path () : fs::path ("d" + std::to_string (F / 100)) / ("e" + std::to_string (F));
    fs::create_directories (Source / Sub);
    fs::create_directories (Backup / Sub);
    for (int I = 0; I < Files; I++, Number++) {
      std::string Name = "f" + std::to_string (I) + ".dat", Bytes = Content + std::to_string (Number);
      WriteFile (Source / Sub / Name, Number % Every == 0 ? Bytes + "+" : Bytes);
      WriteFile (Backup / Sub / Name, Bytes);
    }
  }
}

std::vector<std::string> Surveyor (const fs::path &Source, const fs::path &Backup, const std::string &Path,
                                   bool Contents) {
  std::vector<std::string> Command = {SURVEYOR_TOOL, "--no-settings", "compare", Source.string (), Backup.string ()};
  if (!Path.empty ()) Command.push_back (Path);
  if (Contents) Command.push_back ("--contents");
  Command.push_back ("--lang");
  Command.push_back ("en");
  return Command;
}

std::vector<std::string> Rsync (const fs::path &Source, const fs::path &Backup) {
  return {"rsync", "-rn", "--delete", Source.string () + "/", Backup.string () + "/"};
}

}  // namespace

int main (int Argc, char **Argv) {
  bool Quick = Argc > 1 && std::strcmp (Argv[1], "--quick") == 0;
  int Rounds = Quick ? 3 : 7;
  if (Execute ({"rsync", "--version"}).Status != 0) {
    std::fprintf (stderr, "bench_compare: rsync is missing (scripts/setup.sh installs it)\n");
    return 1;
  }
  std::printf ("%-46s %11s %11s %7s  %11s %11s\n", "case (medians of paired runs)", "surveyor", "tool", "ratio",
               "peak", "peak");

  {
    TempFolder Root;
    fs::path S = Root.Path () / "src", B = Root.Path () / "bak";
    MakeTree (S, B, 1000, 10, 100);
    SideBySide ("10,000 files in 1,000 folders, 1% changed", Surveyor (S, B, "", false), {1}, Rsync (S, B), {0},
                Rounds);
    SideBySide ("the same, contents compared", Surveyor (S, B, "", true), {1},
                {"diff", "-rq", S.string (), B.string ()}, {1}, Rounds);
  }

  // One folder: the cost per entry should not grow with the folder.
  std::vector<std::pair<int, Result>> Folder;
  for (int Entries : {4096, 8192, 16384, 32768, 65000}) {
    TempFolder Root;
    fs::path S = Root.Path () / "src", B = Root.Path () / "bak";
    MakeTree (S, B, 1, Entries, 100);
    Folder.emplace_back (Entries, SideBySide ("one folder of " + std::to_string (Entries) + " files",
                                              Surveyor (S, B, "", false), {1}, Rsync (S, B), {0}, Rounds));
  }

  {
    TempFolder Root;
    fs::path S = Root.Path () / "src", B = Root.Path () / "bak";
    fs::create_directories (S);
    fs::create_directories (B);
    std::string Block (1 << 20, '\0');
    for (size_t I = 0; I < Block.size (); I++) Block[I] = static_cast<char> (I * 7);
    for (const fs::path &Side : {S, B}) {
      int Fd = ::open ((Side / "large.bin").c_str (), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      for (int Mib = 0; Mib < 256; Mib++)
        if (::write (Fd, Block.data (), Block.size ()) != static_cast<ssize_t> (Block.size ())) return 1;
      struct timespec Times[2] = {{kTime, 0}, {kTime, 0}};
      ::futimens (Fd, Times);
      ::close (Fd);
    }
    SideBySide ("a 256 MiB pair, equal", Surveyor (S, B, "large.bin", true), {0},
                {"cmp", (S / "large.bin").string (), (B / "large.bin").string ()}, {0}, Rounds);
  }

  if (!Quick) {
    // 0.1% changed: a job lists 1,024 entries at most (a heading and an
    // entry for each changed file here), and a walk that fills its list ends early.
    TempFolder Root;
    fs::path S = Root.Path () / "src", B = Root.Path () / "bak";
    MakeTree (S, B, 1000, 100, 1000);
    SideBySide ("100,000 files in 1,000 folders, 0.1% changed", Surveyor (S, B, "", false), {1}, Rsync (S, B), {0},
                3);
  }

  // Linear growth: a line through the one-folder times (least squares), and
  // how far the measured times lie from it.
  double N = static_cast<double> (Folder.size ()), SumX = 0, SumY = 0, SumXX = 0, SumXY = 0;
  for (auto &[Entries, R] : Folder) {
    SumX += Entries;
    SumY += R.Ours;
    SumXX += static_cast<double> (Entries) * Entries;
    SumXY += Entries * R.Ours;
  }
  double Slope = (N * SumXY - SumX * SumY) / (N * SumXX - SumX * SumX), Start = (SumY - Slope * SumX) / N;
  std::printf ("\nOne folder, surveyor: %.3f s + %.2f us per entry; measured against that line:\n", Start,
               Slope * 1e6);
  for (auto &[Entries, R] : Folder)
    std::printf ("  %6d files: %.3f s, line %.3f s (%+.0f%%); rsync %.2f us per entry\n", Entries, R.Ours,
                 Start + Slope * Entries, 100 * (R.Ours / (Start + Slope * Entries) - 1), R.Theirs * 1e6 / Entries);
  std::printf ("\nTargets: 10,000 files at most 1.0x rsync and 1.2x diff -rq with contents; one folder of 65,000 "
               "files at most 1.5x rsync; the 256 MiB pair at most 1.0x cmp.\n");
  return 0;
}
