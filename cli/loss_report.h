// What was lost: the rows of --report, and the sentence about an input.

#ifndef SGBK_CLI_LOSS_REPORT_H
#define SGBK_CLI_LOSS_REPORT_H

#include <sgbk/text.h>

#include <cstdint>
#include <memory>
#include <string>

#include "output.h"

namespace cli {

// "2 of 7 characters lost (1 malformed, 1 undefined); first: line 2, byte 4: 81 41"
std::string summaryOf(const sgbk_counts& counts, std::uint64_t lost);

class LossReport {
 public:
  // path  empty for no report
  // most  rows of an input
  LossReport(const std::string& path, std::uint64_t most);

  // Null when there is none, or none any more.
  const Output* output() const { return output_.get(); }
  bool isBroken() const { return isBroken_; }

  // The losses that follow are those of another input. What writes throws OutputFailure.
  void begin(const std::string& input);
  // Adds the losses of the last call for `converter`.
  void add(const sgbk_converter* converter);
  void finish();

 private:
  void flush();

  std::unique_ptr<Output> output_;
  bool isBroken_ = false;  // by a write that failed
  std::string input_;
  std::uint64_t most_;
  std::uint64_t left_ = 0;
  std::string text_;
};

}  // namespace cli

#endif
