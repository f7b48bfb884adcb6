// The document of the default log: "DefaultLog.xml" beside the executable, which holds no entries but draws in
// the file that does.
#ifndef OXACORE_LOG_DEFAULTLOGDOCUMENT_H
#define OXACORE_LOG_DEFAULTLOGDOCUMENT_H

#include <string>

namespace Oxa::Core {

/// A file of the default log: in the folder that System::GetProcessPath gives, whose text is used as it stands.
/// Without a System it is the current folder.
std::string DefaultLogFile(const char* name);

/// Makes the document if it isn't there; one that is there stays as it is, whatever is in it. It appears whole
/// or not at all. If it can't be made, that is told on standard error. Any thread may call.
void CreateDefaultLogDocument();

}  // namespace Oxa::Core

#endif
