// Which program, and which tables it has loaded.

#ifndef SGBK_CLI_VERSION_H
#define SGBK_CLI_VERSION_H

#include <string>

namespace cli {

// What --version prints: the tables in the form that sha256sum checks.
std::string versionText();

}  // namespace cli

#endif
