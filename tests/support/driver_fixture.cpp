#include "support/driver_fixture.h"

#include <stdlib.h>

#include <fstream>
#include <set>
#include <sstream>

#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/windows/window_base.h"
#include "services/service_ids.h"

namespace fs = std::filesystem;

TempFolder::TempFolder () {
  std::string Pattern = (fs::temp_directory_path () / "surveyor-test-XXXXXX").string ();
  if (mkdtemp (Pattern.data ()) == nullptr) throw std::runtime_error ("cannot create a temporary folder");
  Path_ = Pattern;
}

TempFolder::~TempFolder () {
  std::error_code Ignored;
  // Folders a test made read-only must become writable again to be removed.
  for (auto It = fs::recursive_directory_iterator (Path_, Ignored); !Ignored && It != fs::recursive_directory_iterator ();
       It.increment (Ignored))
    if (It->is_directory (Ignored) && !It->is_symlink (Ignored))
      fs::permissions (It->path (), fs::perms::owner_all, fs::perm_options::add, Ignored);
  fs::remove_all (Path_, Ignored);
}

void WriteHostFile (const fs::path &Path, const std::string &Bytes) {
  fs::create_directories (Path.parent_path ());
  std::ofstream Out (Path, std::ios::binary | std::ios::trunc);
  Out.write (Bytes.data (), static_cast<std::streamsize> (Bytes.size ()));
}

std::string ReadHostFile (const fs::path &Path) {
  std::ifstream In (Path, std::ios::binary);
  std::ostringstream Text;
  Text << In.rdbuf ();
  return Text.str ();
}

void DriverTest::SetUp () {
  Root_ = std::make_unique<TempFolder> ();
  Env_ = std::make_unique<env::Environment> (EnvironmentOptions ());
  if (AutoLoad ()) LoadDriver ();
}

void DriverTest::TearDown () {
  if (Env_) {
    Env_->windows ().DestroyAllWindows ();
    Env_->windows ().PumpMessages ();
    if (Loaded_ && CheckPool_) {
      EXPECT_EQ (Fw ().LiveAllocations (), Baseline_) << "pool blocks leaked (or freed twice) by the test";
      EXPECT_EQ (Fw ().BadFrees (), 0u) << "FreePool called with a pointer that is not a live block";
    }
  }
  Env_.reset ();
  Root_.reset ();
}

EFI_STATUS DriverTest::LoadDriver () {
  LoadStatus_ = Env_->LoadDriver (&SurveyorEntryPoint);
  Loaded_ = true;
  Baseline_ = Fw ().LiveAllocations ();
  return LoadStatus_;
}

void DriverTest::RebaseAfterFirstUse () { Baseline_ = Fw ().LiveAllocations (); }

int DriverTest::MakeVolume (const std::string &Name, uint8_t Flags, uint8_t Kind, uint8_t Fs, std::string Label) {
  fs::path Folder = Root_->Path () / Name;
  fs::create_directories (Folder);
  env::VolumeSpec Spec;
  Spec.Folder = Folder.string ();
  Spec.Label = std::move (Label);
  Spec.Flags = Flags;
  Spec.Kind = Kind;
  Spec.FileSystemType = Fs;
  int Volume = Env_->Mount (Spec);
  EXPECT_GE (Volume, 0) << "mounting " << Name;
  if (Volume >= 0) Volumes_.push_back ({Volume, Folder});
  return Volume;
}

fs::path DriverTest::VolumePath (int Volume) {
  for (auto &V : Volumes_)
    if (V.first == Volume) return V.second;
  return Env_->HostFolder (Volume);
}

void DriverTest::WriteFile (int Volume, const std::string &Relative, const std::string &Bytes) {
  WriteHostFile (VolumePath (Volume) / Relative, Bytes);
}

void DriverTest::MakeDir (int Volume, const std::string &Relative) {
  fs::create_directories (VolumePath (Volume) / Relative);
}

std::string DriverTest::VolumeTree (int Volume, const std::string &Relative) {
  std::set<std::string> Entries;
  fs::path Root = VolumePath (Volume) / Relative;
  for (const fs::directory_entry &E : fs::recursive_directory_iterator (Root)) {
    std::string Name = fs::relative (E.path (), Root).generic_string ();
    Entries.insert (E.is_directory () ? Name + "/" : Name + "=" + ReadHostFile (E.path ()));
  }
  std::string Out;
  for (const std::string &E : Entries) Out += (Out.empty () ? "" : " ") + E;
  return Out;
}

SURVEYOR_PROTOCOL *DriverTest::Surveyor () {
  const EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
  return static_cast<SURVEYOR_PROTOCOL *> (Env_->Locate (Guid));
}

WINDOW_BASE_PROTOCOL *DriverTest::Wb () { return Env_->windows ().Table (); }
CONTROL_DRIVER_PROTOCOL *DriverTest::Cd () { return Env_->controls ().Table (); }
GUI_DRIVER_PROTOCOL *DriverTest::Gui () { return Env_->gui ().Table (); }

std::map<std::string, bool> DriverTest::PopupItemStates (WINDOW_HEADER *Popup) {
  std::map<std::string, bool> Out;
  for (const env::PopupItemInfo &Item : Env ().windows ().PopupItems (Popup))
    if (!Item.Separator) Out[Item.Text] = Item.Enabled;
  return Out;
}
