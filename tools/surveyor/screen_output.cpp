#include "tools/surveyor/screen_output.h"

#include <filesystem>
#include <system_error>

#include "env/host/screenshot.h"

namespace surveyor {

bool SaveScreenshot (env::Environment &Env, const std::string &Path, std::string &Error) {
  // The folder is made when missing, so that a script can name a new one.
  std::filesystem::path Folder = std::filesystem::path (Path).parent_path ();
  std::error_code Ignored;
  if (!Folder.empty ()) std::filesystem::create_directories (Folder, Ignored);
  if (env::RenderScreenshot (Env, Path)) return true;
  Error = "cannot write the screenshot " + Path;
  return false;
}

}  // namespace surveyor
