// The hex viewer: showing one page (one read of 4096 bytes and 17 cell texts
// on each of 256 lines), and paging through a whole 64 MiB file.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

constexpr uint64_t kFileSize = 64ull << 20;

struct Setup {
  TempFolder Folder;
  env::Environment Env;
  HEX_VIEWER *Viewer = nullptr;

  Setup () {
    {
      std::ofstream Out (Folder.Path () / "big.bin", std::ios::binary);
      std::string Chunk (1 << 20, '\0');
      for (size_t I = 0; I < Chunk.size (); I++) Chunk[I] = static_cast<char> ((I * 131) ^ (I >> 9));
      for (uint64_t Written = 0; Written < kFileSize; Written += Chunk.size ()) Out.write (Chunk.data (), Chunk.size ());
    }
    env::VolumeSpec Spec;
    Spec.Folder = Folder.Path ().string ();
    int V = Env.Mount (Spec);
    if (V < 0 || Env.LoadDriver (&SurveyorEntryPoint) != EFI_SUCCESS) return;
    Viewer = reinterpret_cast<HEX_VIEWER *> (
        OpenHexViewer (50, 50, reinterpret_cast<const CHAR8 *> ("\\big.bin"), static_cast<UINT8> (V)));
  }
};

void BM_ShowOnePage (benchmark::State &State) {
  Setup S;
  if (S.Viewer == nullptr) {
    State.SkipWithError ("viewer not opened");
    return;
  }
  UINT32 Page = 0;
  for (auto _ : State) {
    S.Viewer->CurrentPage = Page;
    if (!ShowHexPage (S.Viewer)) {
      State.SkipWithError ("page not shown");
      break;
    }
    Page = (Page + 97) % S.Viewer->PageCount;
  }
  State.SetBytesProcessed (State.iterations () * HEX_PAGE_SIZE);
}
BENCHMARK (BM_ShowOnePage)->Unit (benchmark::kMicrosecond);

// Page down from the first page to the last: 16383 commands, each showing
// and redrawing its page.
void BM_PageThrough64MiB (benchmark::State &State) {
  Setup S;
  if (S.Viewer == nullptr) {
    State.SkipWithError ("viewer not opened");
    return;
  }
  for (auto _ : State) {
    State.PauseTiming ();
    S.Viewer->CurrentPage = 0;
    State.ResumeTiming ();
    while (S.Viewer->CurrentPage + 1 < S.Viewer->PageCount)
      S.Env.windows ().SendSysCommand (&S.Viewer->Header, HEX_BUTTON_PAGE_DOWN);
  }
  State.SetBytesProcessed (State.iterations () * kFileSize);
}
BENCHMARK (BM_PageThrough64MiB)->Unit (benchmark::kMillisecond)->Iterations (3);

}  // namespace

BENCHMARK_MAIN ();
