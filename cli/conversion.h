// One input after the other through the converter, with the account of each.

#ifndef SGBK_CLI_CONVERSION_H
#define SGBK_CLI_CONVERSION_H

#include <sgbk/text.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "loss_report.h"
#include "message.h"
#include "options.h"
#include "output.h"

namespace cli {

class Conversion {
 public:
  // Throws UsageError for what the library does not know.
  // total  bytes of all inputs, where that is known
  Conversion(const Options& options, std::optional<std::uint64_t> total);

  // Converts the input at `path` and says what was lost. False when a loss was not permitted.
  // Throws InputFailure and OutputFailure. output  null to write nothing
  bool convert(const std::string& path, Output* output);
  // Characters of that input.
  std::uint64_t lost() const { return sgbk_lost(converter_.get()); }

  // The encoding in which "auto" finds the file at `path`, when that is not the one given by -f and
  // the file has enough characters beyond ASCII to tell; otherwise null. Throws InputFailure.
  const char* otherEncoding(const std::string& path);

  LossReport& report() { return report_; }

 private:
  void account(const std::string& name);

  const Options& options_;
  sgbk::Converter converter_;
  std::vector<char> buffer_;
  LossReport report_;
  Progress progress_;
};

}  // namespace cli

#endif
