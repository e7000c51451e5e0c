// One input after the other through the converter, with the account of each.

#ifndef SGBK_CLI_CONVERSION_H
#define SGBK_CLI_CONVERSION_H

#include <cstdint>
#include <sgbk/text.hpp>
#include <string>
#include <vector>

#include "files.h"
#include "message.h"
#include "options.h"

namespace cli {

class Conversion {
 public:
  // Throws UsageError for what the library does not know.
  // total  bytes of all inputs; infinite where that is not known
  Conversion(const Options& options, double total);

  // Converts the input at `path` and says what was lost. False when a loss was not permitted.
  // Throws FileFailure.
  // output, report  null to write nothing
  bool convert(const std::string& path, Output* output, Output* report);
  // What the report still has to get.
  const std::string& rows() const { return rows_; }
  // Characters of that input.
  std::uint64_t lost() const { return sgbk_lost(converter_.get()); }

  // The encoding in which "auto" finds the file at `path`, when that is not the one given by -f and
  // the file has enough characters beyond ASCII to tell; otherwise null. Throws InputFailure.
  const char* otherEncoding(const std::string& path);

 private:
  void account(const std::string& name) const;

  const Options& options_;
  sgbk::Converter converter_;
  const std::uint64_t mostRows_;  // in the report of an input
  std::string rows_ = kReportHead;
  const bool isProgressShown_;
  const double total_;
  double done_ = 0;
  std::vector<char> buffer_;
};

}  // namespace cli

#endif
