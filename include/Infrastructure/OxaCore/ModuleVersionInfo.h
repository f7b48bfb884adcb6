// What a program or library says of itself: whose it is, which version.
//
// It is read from the file, whether or not it is loaded. In the PE format that is the version resource, which is read
// on every system. In the ELF format it is the package note (".note.package", which a linker writes for
// --package-metadata), with these rules:
//
//   every key              the note's text of that name, such as "CompanyName"
//   ProductName            else the note's "name"
//   ProductVersion         else the note's "version"
//   FileVersion            else the numbers that end the file's name, or that of the file that a link leads to: "1.2.3"
//                          of "libprobe.so.1.2.3"; one number alone is none
//   InternalName           else the name that the library was linked under (its soname)
//
// Texts are UTF-8.
//
// Thread safety: what Create gives never changes; any thread may read it. Any thread may call Create.
// Failures: nothing raises. Whatever a file is like, damaged ones too, reading it ends and takes little memory; running
// out of that throws std::bad_alloc.
//
//   std::string version = "unknown";
//   if (boost::shared_ptr<ModuleVersionInfo> info = ModuleVersionInfo::Create("/opt/acme/libprobe.so"))
//     info->Get(ModuleVersionInfo::sPRODUCT_VERSION, version);
#ifndef INFRASTRUCTURE_OXACORE_MODULEVERSIONINFO_H
#define INFRASTRUCTURE_OXACORE_MODULEVERSIONINFO_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <boost/shared_ptr.hpp>
#include <map>
#include <string>

namespace Oxa::Core {

/// See the top of this file.
class OXACORE_API ModuleVersionInfo {
 public:
  // The keys. The first two are always there.
  static const std::string& sPATH_NAME;          ///< "PathName": the path that was passed, unchanged
  static const std::string& sFILE_NAME;          ///< "FileName": its last part
  static const std::string& sCOMMENTS;           ///< "Comments"
  static const std::string& sCOMPANY_NAME;       ///< "CompanyName"
  static const std::string& sFILE_DESCRIPTION;   ///< "FileDescription"
  static const std::string& sFILE_VERSION;       ///< "FileVersion"
  static const std::string& sINTERNAL_NAME;      ///< "InternalName"
  static const std::string& sLEGAL_COPYRIGHT;    ///< "LegalCopyright"
  static const std::string& sLEGAL_TRADEMARKS;   ///< "LegalTrademarks"
  static const std::string& sORIGINAL_FILENAME;  ///< "OriginalFilename"
  static const std::string& sPRODUCT_NAME;       ///< "ProductName"
  static const std::string& sPRODUCT_VERSION;    ///< "ProductVersion"
  static const std::string& sSPECIAL_BUILD;      ///< "SpecialBuild"

  /// What the file of that path says. Null if it can't be read, is no program or library, or says nothing: a PE file
  /// without a version resource, an ELF file with neither a package note nor two numbers at the end of its name, or a
  /// damaged file.
  static boost::shared_ptr<ModuleVersionInfo> Create(const std::string& path);

  /// The same for a library that is loaded (see SystemLibrary::GetModuleHandleA), by the path that the system knows for
  /// it; for null the program that runs. Null for a handle that is none.
  static boost::shared_ptr<ModuleVersionInfo> Create(HINSTANCE module);

  /// Puts what stands under `key` into `value`. False if there is nothing; `value` isn't touched then.
  bool Get(const std::string& key, std::string& value) const;

 private:
  explicit ModuleVersionInfo(const std::string& path);

  std::map<std::string, std::string> m_values;
};

}  // namespace Oxa::Core

#endif
