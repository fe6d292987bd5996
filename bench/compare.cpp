// Backup comparison speed: a tree of 10,000 files in 1,000 folders compared
// by a job of the loaded driver (one small step per timer tick), with and
// without the byte-by-byte comparison, against `diff -rq` over the same two
// trees; and a 256 MiB file pair compared by a single-file job against `cmp`.
// The ratios (job time / tool time) are printed after the benchmarks.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 1000;
constexpr int kFilesPerFolder = 10;
constexpr size_t kLargeSize = 256u << 20;
constexpr time_t kTime = 1700000000;

void SetTime (const fs::path &Path) {
  struct timespec Times[2] = {{kTime, 0}, {kTime, 0}};
  utimensat (AT_FDCWD, Path.c_str (), Times, 0);
}

// The two trees and the large pair, made once for the whole run.
struct Trees {
  TempFolder Source, Backup;
  Trees () {
    std::string Content (200, 'x');
    for (const fs::path &Root : {Source.Path (), Backup.Path ()}) {
      for (int F = 0; F < kFolders; F++) {
        fs::path Folder = Root / "tree" / ("d" + std::to_string (F / 100)) / ("e" + std::to_string (F));
        fs::create_directories (Folder);
        for (int I = 0; I < kFilesPerFolder; I++) {
          fs::path File = Folder / ("f" + std::to_string (I) + ".dat");
          std::ofstream (File, std::ios::binary) << Content << F << '-' << I;
          SetTime (File);
        }
      }
      // The large pair: equal contents, so every byte is read.
      std::ofstream Out (Root / "large.bin", std::ios::binary);
      std::string Block (1 << 20, '\0');
      for (size_t I = 0; I < Block.size (); I++) Block[I] = static_cast<char> (I * 7);
      for (size_t Done = 0; Done < kLargeSize; Done += Block.size ()) Out.write (Block.data (), Block.size ());
      Out.close ();
      SetTime (Root / "large.bin");
    }
  }
};

Trees &SharedTrees () {
  static Trees T;
  return T;
}

std::map<std::string, double> gSeconds;   // seconds per run, by benchmark
bool gFinished;
VOID EFIAPI OnProgress (COMPARE_JOB *, CHAR8 *, UINT32, BOOLEAN Finished) {
  if (Finished) gFinished = true;
}

// Runs one job of the driver to its end; returns its ticks.
size_t RunJob (const char *Path, bool Contents, bool &Failed) {
  Trees &T = SharedTrees ();
  env::Environment Env;
  Env.LoadDriver (&SurveyorEntryPoint);
  env::VolumeSpec Spec;
  Spec.Folder = T.Source.Path ().string ();
  UINT8 Src = static_cast<UINT8> (Env.Mount (Spec));
  Spec.Folder = T.Backup.Path ().string ();
  UINT8 Bak = static_cast<UINT8> (Env.Mount (Spec));
  EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
  auto *Surveyor = static_cast<SURVEYOR_PROTOCOL *> (Env.Locate (Guid));
  if (Surveyor == nullptr) {
    Failed = true;
    return 0;
  }
  gFinished = false;
  COMPARE_JOB *Job = Surveyor->StartCompareJobWithCallback (Src, Bak, reinterpret_cast<const CHAR8 *> (Path),
                                                            OnProgress);
  Failed = Job == nullptr;
  if (Failed) return 0;
  Job->CompareContents = Contents ? 1 : 0;
  size_t Ticks = 0;
  while (!gFinished) {
    Env.windows ().RunTimerTick ();
    Ticks++;
  }
  return Ticks;
}

void Measure (benchmark::State &State, const std::string &Name, const std::function<bool ()> &Run) {
  SharedTrees ();
  double Total = 0;
  for (auto _ : State) {
    auto Begin = std::chrono::steady_clock::now ();
    if (!Run ()) {
      State.SkipWithError ("the run failed");
      return;
    }
    Total += std::chrono::duration<double> (std::chrono::steady_clock::now () - Begin).count ();
  }
  gSeconds[Name] = Total / static_cast<double> (State.iterations ());
}

void BM_JobTree (benchmark::State &State) {
  bool Contents = State.range (0) != 0;
  size_t Ticks = 0;
  Measure (State, Contents ? "job tree contents" : "job tree", [&] {
    bool Failed = false;
    Ticks = RunJob ("\\tree", Contents, Failed);
    return !Failed;
  });
  State.counters["ticks"] = static_cast<double> (Ticks);
}
BENCHMARK (BM_JobTree)->Arg (0)->Arg (1)->ArgName ("contents")->Unit (benchmark::kMillisecond)->Iterations (3)->UseRealTime ();

void BM_DiffTree (benchmark::State &State) {
  Trees &T = SharedTrees ();
  std::string Command = "diff -rq '" + (T.Source.Path () / "tree").string () + "' '" +
                        (T.Backup.Path () / "tree").string () + "' > /dev/null";
  Measure (State, "diff -rq", [&] { return std::system (Command.c_str ()) == 0; });
}
BENCHMARK (BM_DiffTree)->Unit (benchmark::kMillisecond)->Iterations (3)->UseRealTime ();

void BM_JobLargeFile (benchmark::State &State) {
  size_t Ticks = 0;
  Measure (State, "job large file", [&] {
    bool Failed = false;
    Ticks = RunJob ("\\large.bin", true, Failed);
    return !Failed;
  });
  State.counters["ticks"] = static_cast<double> (Ticks);
  State.SetBytesProcessed (static_cast<int64_t> (State.iterations ()) * static_cast<int64_t> (kLargeSize));
}
BENCHMARK (BM_JobLargeFile)->Unit (benchmark::kMillisecond)->Iterations (3)->UseRealTime ();

void BM_CmpLargeFile (benchmark::State &State) {
  Trees &T = SharedTrees ();
  std::string Command = "cmp '" + (T.Source.Path () / "large.bin").string () + "' '" +
                        (T.Backup.Path () / "large.bin").string () + "' > /dev/null";
  Measure (State, "cmp", [&] { return std::system (Command.c_str ()) == 0; });
  State.SetBytesProcessed (static_cast<int64_t> (State.iterations ()) * static_cast<int64_t> (kLargeSize));
}
BENCHMARK (BM_CmpLargeFile)->Unit (benchmark::kMillisecond)->Iterations (3)->UseRealTime ();

void PrintRatio (const char *Label, const std::string &Job, const std::string &Tool) {
  if (gSeconds.count (Job) == 0 || gSeconds.count (Tool) == 0 || gSeconds[Tool] <= 0) return;
  std::printf ("ratio %-38s %8.2f  (%.3f s / %.3f s)\n", Label, gSeconds[Job] / gSeconds[Tool], gSeconds[Job],
               gSeconds[Tool]);
}

}  // namespace

int main (int argc, char **argv) {
  benchmark::Initialize (&argc, argv);
  if (benchmark::ReportUnrecognizedArguments (argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks ();
  benchmark::Shutdown ();
  PrintRatio ("job tree / diff -rq", "job tree", "diff -rq");
  PrintRatio ("job tree with contents / diff -rq", "job tree contents", "diff -rq");
  PrintRatio ("job large file / cmp", "job large file", "cmp");
  return 0;
}
