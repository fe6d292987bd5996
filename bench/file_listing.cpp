// ReadDirectory of a folder of 4096 files through the file driver's table,
// as the main window's listing calls it: open, read, free, close.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "env/files/file_driver.h"
#include "env/host/environment.h"
#include "env/host/folder_fs.h"
#include "support/driver_fixture.h"

namespace {

void BM_ReadDirectory4096 (benchmark::State &State) {
  TempFolder Folder, System;
  for (int I = 0; I < 4096; I++) {
    char Name[32];
    std::snprintf (Name, sizeof (Name), "file%04d.txt", (I * 2654435761u) % 4096);
    std::ofstream (Folder.Path () / Name) << I;
  }
  env::Firmware Fw;
  env::FileDriver Files (env::OpenFolderVolume (System.Path ().string ()), 9);
  env::VolumeSpec Spec;
  Spec.Folder = Folder.Path ().string ();
  UINT8 Volume = static_cast<UINT8> (env::MountFolder (Files, Spec));
  FILE_DRIVER_PROTOCOL *T = Files.Table ();

  for (auto _ : State) {
    UINT16 Handle = T->OpenDirectory (Volume, reinterpret_cast<const CHAR8 *> ("\\"));
    UINT16 Count = 0;
    DIRECTORY_ENTRY *Entries = T->ReadDirectory (Handle, &Count);
    benchmark::DoNotOptimize (Entries);
    if (Count != 4096) State.SkipWithError ("wrong entry count");
    Fw.FreePool (Entries);
    T->CloseHandle (Handle);
  }
  State.SetItemsProcessed (State.iterations () * 4096);
  State.counters["per_entry"] = benchmark::Counter (static_cast<double> (State.iterations ()) * 4096,
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK (BM_ReadDirectory4096)->Unit (benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN ();
