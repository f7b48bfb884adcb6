// The name of one file or folder, kept as text: what it is made of, whether it is valid, what it stands for.
//
// A name has four parts: the base ("C" of "C:\dir\file.txt", "\\server" of "\\server\share\file.txt"), the
// branch ("\dir\", with the separator that ends it), the leaf ("file") and the extension ("txt"). Whether
// there is a separator at the end matters: "dir/" is a folder without a leaf, "dir" is a leaf.
//
// The text is taken literally. Nothing is normalised, not even when names are compared: mixed separators, "."
// and ".." and the caller's case stay. Only ForceAbsolute lets the system rewrite it. The rules are the same on
// every system: "/" and "\" both separate, a name is absolute by its drive or server only ("/tmp/x" counts as
// relative), and what the system is asked about is the text with "/" for "\". A drive or server means nothing to
// a system that has none; it is then part of the name.
//
// Thread safety: a value; one object belongs to one thread at a time.
// Failures: only operator+= raises. What the file system refuses comes back as false. Null texts count as
// empty.
//
//   PathName path("C:\\data\\run.txt");
//   path.SetExt("xml");                        // C:\data\run.xml
//   PathName folder(path.GetBaseAndBranch());  // C:\data\ .
//   folder += "old";                           // C:\data\old
#ifndef INFRASTRUCTURE_OXACORE_PATHNAME_H
#define INFRASTRUCTURE_OXACORE_PATHNAME_H

#include <Infrastructure/OxaCore/Export.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Oxa::Core {

class CharacterClasses;

/// See the top of this file.
class OXACORE_API PathName {
 public:
  /// Whose rules a name follows. Only NT is supported. A name of another format has no parameters: nothing but
  /// colons and the backslashes of servers separates, letters and digits are the only legal characters, and all
  /// limits are 0, so that no component is valid.
  enum PathFormat { NT = 0, UNIX = 1 };

  /// Hold the text as it is. What this class appends is from now on the first separator in it, or "/".
  PathName(PathFormat format = NT);
  PathName(const std::string& text, PathFormat format = NT);
  PathName(const char* text, PathFormat format = NT);

  /// Replace the text. The separator that this class appends is from now on the first one in the text, if it
  /// has one; otherwise it stays what it was. What ends a base is from now on the "\" behind a server or the ":"
  /// behind a drive, whichever the text begins with. SetBase and SetBaseAndBranch settle both anew as well; no
  /// other change does, so that a drive that comes to the front by one may go unnoticed.
  PathName& operator=(const std::string& text);
  PathName& operator=(const char* text);

  /// The exact text decides, case included.
  bool operator==(const std::string& text) const { return m_sText == text; }
  bool operator!=(const std::string& text) const { return m_sText != text; }
  bool operator==(const char* text) const { return m_sText == (text != nullptr ? text : ""); }
  bool operator!=(const char* text) const { return !(*this == text); }
  bool operator==(const PathName& other) const { return m_sText == other.m_sText; }
  bool operator!=(const PathName& other) const { return m_sText != other.m_sText; }

  /// The text; valid until the next change of this object.
  operator const char*() const { return m_sText.c_str(); }
  operator const std::string&() const { return m_sText; }

  // --- What the text says

  /// Begins with two backslashes. Other separators make no server.
  bool IsUNC() const;

  /// Has a server, or a drive with a separator behind it. "C:x" and "\x" are relative.
  bool IsAbsolute() const;

  /// The opposite; the empty text is relative.
  bool IsRelative() const { return !IsAbsolute(); }

  /// Whether the text is a well-formed name: a drive of one character, no two separators side by side, components
  /// that are not too long (256 before the last dot, 257 behind it, 260 in all; 256 without a dot), and no
  /// characters but letters, digits and " _~!#%&()@`'^$.-". Bytes above 127 are not valid. Not looked at are the
  /// first folder behind a drive and separator, the share of a server, and the first two characters of a
  /// server's name. A text of nothing but ":" is not valid. Allocates nothing.
  bool IsValid() const;

  bool HasBase() const;    ///< a server, or a drive; true for a server alone, of which GetBase gives ""
  bool HasBranch() const;  ///< any separator
  bool HasExt() const;     ///< GetExt gives something
  bool HasLeaf() const;    ///< GetLeafAndExt gives something: ".txt" has a leaf in this sense

  /// The drive without its colon, or the server with its two backslashes; "" without a separator behind it.
  std::string GetBase() const;

  /// The folders with the separator that ends them. Of a server's name it begins with the backslash behind the
  /// server.
  std::string GetBranch() const;

  /// All through the last separator; of a bare "F:name" it is "F:".
  std::string GetBaseAndBranch() const;

  /// The last component up to the last dot: "" of ".txt".
  std::string GetLeaf() const;

  /// What stands behind the last dot of the last component: "" of "file.".
  std::string GetExt() const;

  /// Leaf, dot and extension. A dot at the end is lost.
  std::string GetLeafAndExt() const;

  // --- Changes of the text

  /// "d", "d:", "\\server" and "\\server\" are all bases. The empty base takes the base away. Without a branch
  /// the name gets the default separator for one.
  void SetBase(const std::string& aBase);

  /// Replaces the branch, and ends it in a separator. The branch that GetBranch gives of a server's name has its
  /// backslash, and set again leaves two behind the server.
  void SetBranch(const std::string& aBranch);

  /// Replaces both, and ends them in a separator. The empty text takes them away.
  void SetBaseAndBranch(const std::string& aPath);

  /// Puts folders behind those that there are. See SetBranch for names with a server.
  void AddBranch(const std::string& aBranch);

  /// Replaces the leaf and keeps the extension; an extension of `aLeaf` is dropped, unless `aLeaf` begins with a
  /// dot.
  void SetLeaf(const std::string& aLeaf);

  /// With or without a dot in front. The empty extension takes it away.
  void SetExt(const std::string& aExt);

  /// Replaces leaf and extension by the text as it is.
  void SetLeafAndExt(const std::string& aName);

  /// Goes on behind this folder: a separator where there is none, and `aPath` without one separator at its
  /// start. Nothing for null and the empty text; an assignment if this text is empty.
  /// Raises LogicError if this name has an extension, and InvalidParameter ("aPath") if `aPath` has a base;
  /// this object then stays as it was.
  void operator+=(const std::string& aPath);
  void operator+=(const char* aPath);
  void operator+=(const PathName& aPath) { *this += aPath.m_sText.c_str(); }

  /// Ends the text in a separator, unless it is empty.
  void ForceAsDir();

  /// Makes the name absolute by the system's current folder, and has "." and ".." resolved by their text. False
  /// if the system refuses or the result has more than 259 characters; the text is then untouched.
  bool ForceAbsolute();

  /// With the empty reference: takes the base away. Otherwise makes both absolute, and cuts the reference off if
  /// this name begins with it, case ignored, and one backslash behind it.
  void ForceRelative(const std::string& aReference);

  // --- The file system. One separator at the end of the text is not passed on in the first three. So a root alone
  //     ("/") is never found.

  /// A plain file for a name with a leaf, a folder for one without: the separator at the end decides what is
  /// asked for.
  bool Exists() const;

  /// Is a folder, whatever the name looks like.
  bool IsDir() const;

  /// The lower 32 bits of the size of a plain file in bytes; 0 for all else.
  unsigned long GetLength() const;

  /// Makes all folders of the branch that are missing; the leaf doesn't count. True if there are none to make.
  /// Folders already made stay when a later one fails. A server is left out: the folders are then looked for, and
  /// made, in the root.
  bool CreateDirectoryA() const;

  /// Removes the file, or the folder if it is empty. True as well if the name doesn't Exist.
  bool Delete();

  /// Removes a file of this folder.
  bool Delete(const std::string& aName);

  /// Gives the file another name in the same folder, and takes that name. False if this name doesn't Exist, or
  /// if anything has the other one, be it a link that leads nowhere. Raises as operator+= does.
  bool Rename(const std::string& aNewName);

  /// Appends the names in this folder that match the pattern, sorted by their bytes; folders, "." and ".." are
  /// among them. "*" stands for any characters, "?" for one; case counts. (So "*.*" wants a dot.) A pattern
  /// may begin with folders: what stands behind its last separator is matched. True also if nothing matches;
  /// false if there is no such folder or it can't be read, and `aEntries` is then untouched. The empty name stands
  /// for the root here.
  bool ReadDirectory(std::vector<std::string>& aEntries, std::string aPattern);

 protected:
  /// The parameters of the format; see PathFormat.
  void InitParams(PathFormat format);

  /// Takes from the text what ends the base and what this class appends. Whether the text has a separator.
  bool InitSeparators();

  // Set the parameters of the one format and of the other.
  void SetNT();
  void SetUNIX();

  /// Whether `character` is one of the path separators.
  bool IsPathSeparator(char character) const;

  /// The name, as it was given.
  std::string m_sText;

  // The parameters; the texts are static constants.
  const char* legalCharacters = "";  ///< allowed in a component, beside letters and digits
  const char* pathSeparators = "";
  char defaultSeparator = 0;  ///< what this class appends; 0 is never appended
  const char* extensionSeparator = "";
  const char* baseSeparator = "";
  unsigned long long maxLeafLength = 0;
  unsigned long long maxExtLength = 0;
  unsigned long long maxComponentLength = 0;
  unsigned long long maxBaseLength = 0;
  int maxDepth = 0;  ///< 0: no limit

 private:
  std::string::size_type FindBaseSeparator() const;
  std::string::size_type FindFirstSeparator(std::string::size_type start) const;
  std::string::size_type FindLastSeparator() const;
  bool EndsInSeparator(const std::string& text) const;
  void AppendSeparatorTo(std::string& text) const;
  std::string ForSystem() const;
  bool IsValidBy(const CharacterClasses& classes) const;
  bool PassBase(const CharacterClasses& classes, std::size_t& at) const;
  bool AreLengthsValid(const CharacterClasses& classes, std::size_t at) const;
  bool IsShort(std::size_t length) const;
  bool IsTooLong(const char* component, std::size_t length) const;
};

}  // namespace Oxa::Core

#endif
