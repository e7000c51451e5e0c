// One input after the other through the converter, with the account of each.

#ifndef SGBK_CLI_CONVERSION_H
#define SGBK_CLI_CONVERSION_H

#include <sgbk/text.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "loss_report.h"
#include "message.h"
#include "options.h"
#include "output.h"
#include "progress.h"

namespace cli {

using Converter = std::unique_ptr<sgbk_converter, decltype(&sgbk_close)>;

// Throws UsageError for what sgbk_open() and sgbk_set() do not know.
Converter openConverter(const std::string& from, const std::string& to);

// What becomes of an input.
enum class Outcome { converted, unreadable, stoppedAtLoss };

class Conversion {
 public:
  // total  bytes of all inputs, where that is known
  Conversion(const Options& options, std::optional<std::uint64_t> total);

  // Converts the input at `path`; says what is wrong with it, or what was lost. Throws
  // OutputFailure.
  // output  null to write nothing
  // lost    receives the number of its losses
  Outcome convert(const std::string& path, Output* output, std::uint64_t& lost);

  // The encoding in which "auto" finds the file at `path`, when that is not the one given by -f and
  // the file has enough characters beyond ASCII to tell; otherwise null. Throws InputFailure.
  const char* otherEncoding(const std::string& path);

  // A message about a file that is not converted, and the status that goes with it.
  void tell(Status status, const std::string& text);
  void fail() { status_ = Status::failure; }

  LossReport& report() { return report_; }
  Status status() const { return status_; }

 private:
  void account(const std::string& name, std::uint64_t lost);

  const Options& options_;
  Converter converter_;
  Converter finder_;
  std::vector<char> buffer_;
  LossReport report_;
  Progress progress_;
  Status status_ = Status::done;
  std::uint64_t bytesBefore_ = 0;  // of the inputs that are done
};

}  // namespace cli

#endif
