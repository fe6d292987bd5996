// Loading and unloading the driver image: binding of the siblings with their
// exact versions, the console lines of each failure, the installed table.
#include <gtest/gtest.h>

#include "core/bindings.h"
#include "support/driver_fixture.h"

namespace {

class EntryTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  env::Options EnvironmentOptions () override { return Opts; }
  // Builds the environment again with the current options.
  void Rebuild () {
    TearDown ();
    SetUp ();
  }
  env::Options Opts;
};

TEST_F (EntryTest, LoadsAndInstallsTheTableWithEverySiblingPresent) {
  EXPECT_EQ (LoadDriver (), EFI_SUCCESS);
  EXPECT_EQ (Console (), "");
  SURVEYOR_PROTOCOL *Table = Surveyor ();
  ASSERT_NE (Table, nullptr);
  EXPECT_EQ ((std::vector<UINT64> {Table->Version, Table->Reserved0, Table->Reserved}),
             (std::vector<UINT64> {1, 0, 0}));
  void *const *Operations = reinterpret_cast<void *const *> (&Table->OpenVolumeWindow);
  for (int I = 0; I < 11; I++) EXPECT_NE (Operations[I], nullptr) << "operation " << I;
  EXPECT_TRUE (gSettingsService != nullptr && gVhdService != nullptr);
  EXPECT_EQ (gNtfsService, nullptr);  // bound on first use only
  EXPECT_NE (BindNtfsService (), nullptr);
  // Nothing is left in the pool by the single-handle lookups.
  EXPECT_EQ (Fw ().LiveAllocations (), PoolBaseline ());
}

TEST_F (EntryTest, RequiredSiblingsMissingOrOfAnotherVersionStopTheLoadWithTheirLines) {
  const std::string NoFileDriver = "Surveyor: no file driver found!\r\n";
  const std::string Toolkit = "Surveyor:Failed to locate window base!\r\n";
  struct Case {
    const char *Name;
    std::function<void (env::Options &)> Change;
    std::string Console;
  };
  std::vector<Case> Cases = {
      {"two file drivers", [] (env::Options &O) { O.FileDriverHandles = 2; }, NoFileDriver},
      {"no file driver", [] (env::Options &O) { O.FileDriverHandles = 0; }, NoFileDriver},
      // Checked before the toolkit, whose absence would print a line of its own.
      {"file driver 8", [] (env::Options &O) { O.FileDriverVersion = 8; O.WithWindowBase = false; },
       "Surveyor: file driver is of different version 8 VS 9\r\n"},
      {"file driver 1A", [] (env::Options &O) { O.FileDriverVersion = 0x1A; },   // printed in hexadecimal
       "Surveyor: file driver is of different version 1A VS 9\r\n"},
      {"window base 16", [] (env::Options &O) { O.WindowBaseVersion = 16; },
       "SURVEYOR: Winbase of different version:10,F\r\n" + Toolkit},
      {"window base absent", [] (env::Options &O) { O.WithWindowBase = false; },
       "SURVEYOR:NO winbase found!\r\n" + Toolkit},
      {"gui 4", [] (env::Options &O) { O.GuiVersion = 4; },
       "SURVEYOR: GUI driver of different version:4,5\r\n" + Toolkit},
      {"control absent", [] (env::Options &O) { O.WithControlDriver = false; },
       "SURVEYOR:NO control driver found!\r\n" + Toolkit},
      {"control 7", [] (env::Options &O) { O.ControlVersion = 7; },
       "SURVEYOR: control driver of different version:7,6\r\n" + Toolkit},
      {"jobio absent", [] (env::Options &O) { O.WithJobio = false; }, "SURVEYOR:NO jobio driver found!\r\n" + Toolkit},
      {"jobio 11", [] (env::Options &O) { O.JobioVersion = 11; },
       "SURVEYOR: jobio driver of different version:B,5\r\n" + Toolkit},
      {"jpg 2", [] (env::Options &O) { O.JpgVersion = 2; },
       "SURVEYOR:NO JPG driver found or not supported version!\r\n" + Toolkit},
      {"jpg absent", [] (env::Options &O) { O.WithJpg = false; },
       "SURVEYOR:NO JPG driver found or not supported version!\r\n" + Toolkit},
  };
  for (const Case &C : Cases) {
    Opts = env::Options ();
    C.Change (Opts);
    Rebuild ();
    EXPECT_EQ (LoadDriver (), EFI_LOAD_ERROR) << C.Name;
    EXPECT_EQ (Console (), C.Console) << C.Name;
    EXPECT_EQ (Surveyor (), nullptr) << C.Name;
  }

  // A failing open of the one file driver handle counts as absent too; the buffer is freed.
  Opts = env::Options ();
  Rebuild ();
  size_t Before = Fw ().LiveAllocations ();
  Fw ().FailService (env::BootService::OpenProtocol, EFI_ACCESS_DENIED);
  EXPECT_EQ (LoadDriver (), EFI_LOAD_ERROR);
  EXPECT_EQ (Console (), NoFileDriver);
  EXPECT_EQ (Fw ().LiveAllocations (), Before);
  EXPECT_EQ (Fw ().BadFrees (), 0u);
}

TEST_F (EntryTest, OptionalServicesMissingOrOtherVersionLoadSilently) {
  struct Case {
    const char *Name;
    std::function<void (env::Options &)> Change;
    bool SettingsBound, VhdBound;
  };
  std::vector<Case> Cases = {
      {"no settings", [] (env::Options &O) { O.WithSettings = false; }, false, true},
      {"settings 2", [] (env::Options &O) { O.SettingsVersion = 2; }, false, true},
      {"no vhd", [] (env::Options &O) { O.WithVhd = false; }, true, false},
      {"vhd 5", [] (env::Options &O) { O.VhdVersion = 5; }, true, false},
      {"vhd 3, no ntfs", [] (env::Options &O) { O.VhdVersion = 3; O.WithNtfs = false; }, true, false},
  };
  for (const Case &C : Cases) {
    Opts = env::Options ();
    C.Change (Opts);
    Rebuild ();
    EXPECT_EQ (LoadDriver (), EFI_SUCCESS) << C.Name;
    EXPECT_EQ (Console (), "") << C.Name;
    ASSERT_NE (Surveyor (), nullptr) << C.Name;
    EXPECT_EQ (Surveyor ()->Version, 1u) << C.Name;
    EXPECT_EQ (gSettingsService != nullptr, C.SettingsBound) << C.Name;
    EXPECT_EQ (gVhdService != nullptr, C.VhdBound) << C.Name;
  }
  EXPECT_EQ (BindNtfsService (), nullptr);  // the last case has no NTFS service
}

TEST_F (EntryTest, FailedInstallationPrintsItsLineAndReturnsTheStatus) {
  Fw ().FailService (env::BootService::InstallProtocolInterface, EFI_OUT_OF_RESOURCES);
  EXPECT_EQ (LoadDriver (), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ (Console (), "Failed to install surveyor driver!\r\n");
  EXPECT_EQ (Surveyor (), nullptr);
}

TEST_F (EntryTest, UnloadWithdrawsTheTableUnlessTheFirmwareRefuses) {
  ASSERT_EQ (LoadDriver (), EFI_SUCCESS);
  ASSERT_NE (Surveyor (), nullptr);

  Fw ().FailService (env::BootService::UninstallProtocolInterface, EFI_ACCESS_DENIED);
  EXPECT_EQ (Env ().UnloadDriver (), EFI_ACCESS_DENIED);
  EXPECT_EQ (Console (), "Surveyor Unload Failed\r\n");
  EXPECT_NE (Surveyor (), nullptr);  // still installed, image still loaded

  Fw ().ClearConsole ();
  EXPECT_EQ (Env ().UnloadDriver (), EFI_SUCCESS);
  EXPECT_EQ (Console (), "Surveyor driver unloaded!\r\n");
  EXPECT_EQ (Surveyor (), nullptr);
  EXPECT_EQ (Env ().UnloadDriver (), EFI_NOT_FOUND);  // nothing left to unload

  // The image loads again from a clean state.
  Fw ().ClearConsole ();
  EXPECT_EQ (LoadDriver (), EFI_SUCCESS);
  EXPECT_NE (Surveyor (), nullptr);
  EXPECT_EQ (Console (), "");
}

}  // namespace
