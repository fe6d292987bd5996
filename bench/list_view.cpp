// List view throughput: filling a listing of 4096 rows with four cell texts
// each, and rewriting one hex page (256 lines of 17 cells).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

#include "env/controls/control_driver.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"

namespace {

const CHAR8 *T (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

struct Entry {
  char Name[216] = {};
};

void BM_FillListing (benchmark::State &State) {
  env::Environment Env;
  WINDOW_BASE_PROTOCOL *Wb = Env.windows ().Table ();
  CONTROL_DRIVER_PROTOCOL *Cd = Env.controls ().Table ();
  WINDOW_HEADER *Window = Wb->CreateWindow (984, Wb->Desktop, nullptr, nullptr, nullptr, 0, 0, 640, 480);
  LIST_CONTROL *List = Cd->CreateListView (Window, 2, 60, 635, 390, 1);
  Cd->AddColumn (List, T ("name"), 192, 80, TRUE, FALSE);
  Cd->AddColumn (List, T ("size"), 32, 64, FALSE, TRUE);
  Cd->AddColumn (List, T ("type"), 16, 64, FALSE, FALSE);
  Cd->AddColumn (List, T ("date"), 32, 96, FALSE, FALSE);
  Entry E;
  char Size[32];
  for (auto _ : State) {
    Cd->ClearList (List);
    for (int I = 0; I < 4096; I++) {
      std::snprintf (E.Name, sizeof (E.Name), "file%05d.dat", I);
      UINT16 Row = Cd->AddListItem (List, 3, FALSE, static_cast<UINT32> (I), static_cast<UINT64> (I) * 1000, &E);
      std::snprintf (Size, sizeof (Size), "%d,000", I);
      Cd->SetItemText (List, 0, Row, T (E.Name));
      Cd->SetItemText (List, 1, Row, T (Size));
      Cd->SetItemText (List, 2, Row, T (" "));
      Cd->SetItemText (List, 3, Row, T ("2026.11.23 01:30:00"));
    }
    benchmark::DoNotOptimize (List->RowCount);
  }
  State.SetItemsProcessed (State.iterations () * 4096);
  Wb->DestroyWindow (Window);
}
BENCHMARK (BM_FillListing)->Unit (benchmark::kMillisecond);

void BM_HexPage (benchmark::State &State) {
  env::Environment Env;
  WINDOW_BASE_PROTOCOL *Wb = Env.windows ().Table ();
  CONTROL_DRIVER_PROTOCOL *Cd = Env.controls ().Table ();
  WINDOW_HEADER *Window = Wb->CreateWindow (840, Wb->Desktop, nullptr, nullptr, nullptr, 0, 0, 640, 480);
  LIST_CONTROL *List = Cd->CreateListView (Window, 2, 60, 635, 390, 1);
  Cd->AddColumn (List, T ("offset"), 22, 32, FALSE, FALSE);
  char Title[8];
  for (int C = 0; C < 16; C++) {
    std::snprintf (Title, sizeof (Title), "%02x", C);
    Cd->AddColumn (List, T (Title), 4, 16, TRUE, TRUE);
  }
  Cd->AddColumn (List, T ("ASCII"), 19, 96, FALSE, FALSE);
  Entry E;
  for (int Line = 0; Line < 256; Line++) Cd->AddListItem (List, 126, FALSE, 0, 0, &E);
  char Cell[24];
  unsigned Page = 0;
  for (auto _ : State) {
    for (int Line = 0; Line < 256; Line++) {
      std::snprintf (Cell, sizeof (Cell), "%08X", Page * 4096 + Line * 16);
      Cd->SetItemText (List, 0, static_cast<UINT16> (Line), T (Cell));
      for (int C = 1; C <= 16; C++) {
        std::snprintf (Cell, sizeof (Cell), "%02X", (Line * 16 + C) & 0xFF);
        Cd->SetItemText (List, static_cast<UINT8> (C), static_cast<UINT16> (Line), T (Cell));
      }
    }
    Page++;
  }
  State.SetItemsProcessed (State.iterations () * 256 * 17);
  Wb->DestroyWindow (Window);
}
BENCHMARK (BM_HexPage)->Unit (benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN ();
