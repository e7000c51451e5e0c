#include "loss_report.h"

#include <algorithm>

#include "message.h"

namespace cli {
namespace {

std::string bytesOf(const sgbk_loss& loss) {
  return inHex({reinterpret_cast<const char*>(loss.bytes), loss.size});
}

// Empty where the input is not in Unicode.
std::string codePointOf(const sgbk_loss& loss) {
  return loss.code_point == 0 ? "" : codePointName(loss.code_point);
}

}  // namespace

std::string summaryOf(const sgbk_counts& counts, std::uint64_t lost) {
  std::string text = std::to_string(counts.characters) + " characters, none lost";
  if (lost != 0) {
    text = std::to_string(lost) + " of " + std::to_string(counts.characters) + " characters lost (";
    const char* separator = "";
    for (int reason = 0; reason < SGBK_REASONS; ++reason) {
      if (reason == SGBK_REPLACED || counts.reasons[reason] == 0) continue;
      text += separator + std::to_string(counts.reasons[reason]) + " " + sgbk_reason_name(reason);
      separator = ", ";
    }
    text += ")";
  }
  if (const auto replaced = counts.reasons[SGBK_REPLACED]; replaced != 0) {
    text += ", " + std::to_string(replaced) + " replaced by ASCII";
  }
  if (lost == 0) return text;
  const std::string codePoint = codePointOf(counts.first);
  text += "; first: line " + std::to_string(counts.first.line) + ", byte " +
          std::to_string(counts.first.offset) + ": " + bytesOf(counts.first);
  return codePoint.empty() ? text : text + " (" + codePoint + ")";
}

LossReport::LossReport(const std::string& path, std::uint64_t most) : most_(most) {
  if (path.empty()) return;
  output_ = std::make_unique<Output>(path);
  text_ = "file\tline\tbyte\tbytes\treason\tcode point\n";
}

void LossReport::begin(const std::string& input) {
  input_ = escaped(input);
  left_ = most_;
}

void LossReport::add(const sgbk_converter* converter) {
  constexpr std::size_t kBuffered = 1 << 16;
  std::size_t count = 0;
  if (output_ == nullptr || left_ == 0) return;
  const sgbk_loss* loss = sgbk_losses(converter, &count);
  for (const sgbk_loss* const end = loss + std::min<std::uint64_t>(count, left_); loss != end;
       ++loss, --left_) {
    text_ += input_ + '\t' + std::to_string(loss->line) + '\t' + std::to_string(loss->offset) +
             '\t' + bytesOf(*loss) + '\t' + sgbk_reason_name(loss->reason) + '\t' +
             codePointOf(*loss) + '\n';
    if (text_.size() > kBuffered) flush();
  }
}

void LossReport::finish() {
  if (output_ == nullptr || isBroken_) return;
  flush();
  output_->putInPlace();
}

void LossReport::flush() {
  isBroken_ = true;
  output_->write(text_);
  isBroken_ = false;
  text_.clear();
}

}  // namespace cli
