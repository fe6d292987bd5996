// The main window on a directory of 4096 files: opening the window (which
// lists the root) and refreshing its listing. Reported per entry.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "filemanager/listing.h"
#include "services/service_ids.h"
#include "support/driver_fixture.h"

namespace {

constexpr int kEntries = 4096;

struct Setup {
  TempFolder Folder;
  env::Environment Env;
  SURVEYOR_PROTOCOL *Surveyor = nullptr;
  UINT8 Volume = 0;
  bool Ok = false;

  Setup () {
    for (int I = 0; I < kEntries; I++) {
      char Name[32];
      std::snprintf (Name, sizeof (Name), "file%04u.txt", static_cast<unsigned> ((I * 2654435761u) % kEntries));
      std::ofstream (Folder.Path () / Name) << I;
    }
    env::VolumeSpec Spec;
    Spec.Folder = Folder.Path ().string ();
    int V = Env.Mount (Spec);
    if (V < 0 || Env.LoadDriver (&SurveyorEntryPoint) != EFI_SUCCESS) return;
    Volume = static_cast<UINT8> (V);
    const EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
    Surveyor = static_cast<SURVEYOR_PROTOCOL *> (Env.Locate (Guid));
    Ok = Surveyor != nullptr;
  }
};

void PerEntry (benchmark::State &State) {
  State.SetItemsProcessed (State.iterations () * kEntries);
  State.counters["per_entry"] = benchmark::Counter (static_cast<double> (State.iterations ()) * kEntries,
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_OpenWindow4096 (benchmark::State &State) {
  Setup S;
  if (!S.Ok) {
    State.SkipWithError ("driver not loaded");
    return;
  }
  for (auto _ : State) {
    WINDOW_HEADER *W = S.Surveyor->OpenVolumeWindow (0, 0, S.Volume, nullptr, nullptr);
    if (W == nullptr || reinterpret_cast<MAIN_WINDOW *> (W)->List->RowCount != kEntries) {
      State.SkipWithError ("window not opened with every entry");
      break;
    }
    State.PauseTiming ();
    S.Env.windows ().SendSysCommand (W, SYSCMD_CLOSE);
    S.Env.windows ().PumpMessages ();
    State.ResumeTiming ();
  }
  PerEntry (State);
}
BENCHMARK (BM_OpenWindow4096)->Unit (benchmark::kMillisecond);

void BM_Refresh4096 (benchmark::State &State) {
  Setup S;
  if (!S.Ok) {
    State.SkipWithError ("driver not loaded");
    return;
  }
  auto *W = reinterpret_cast<MAIN_WINDOW *> (S.Surveyor->OpenVolumeWindow (0, 0, S.Volume, nullptr, nullptr));
  if (W == nullptr) {
    State.SkipWithError ("window not opened");
    return;
  }
  for (auto _ : State) {
    Refresh (W);
    if (W->List->RowCount != kEntries) {
      State.SkipWithError ("wrong row count");
      break;
    }
  }
  PerEntry (State);
  S.Env.windows ().DestroyAllWindows ();
  S.Env.windows ().PumpMessages ();
}
BENCHMARK (BM_Refresh4096)->Unit (benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN ();
