// The road of a text: found, decoded, taken through the stages, encoded.

#ifndef SGBK_TEXT_CONVERTER_H
#define SGBK_TEXT_CONVERTER_H

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "account.h"
#include "buffer.h"
#include "decoder.h"
#include "detect.h"
#include "options.h"
#include "stage.h"

namespace sgbk::text {

class Converter {
 public:
  Converter(Source source, Target target);

  // Throws Failure, or std::bad_alloc.
  void set(const char* option, const char* value);
  // output() has what becomes of it until the next call, also after Failure.
  void convert(std::string_view in, bool last);
  void reset();

  std::string_view output() const { return out_.view().substr(0, out_.size() - held_); }
  const Account& account() const { return account_; }
  Source source() const { return source_; }

 private:
  void start();
  void setSource(Source source);
  void setForm(Form form);
  void setReplacement(Form form);
  bool hasMiddle() const { return isDeclaring_ || !stages_.empty() || isHeldBefore(); }
  // Whether strict holds lines before they are encoded: in gbk-wide a line feed is written as other
  // characters are, too.
  bool isHeldBefore() const { return options_.strict && target_ == Target::gbkWide; }
  bool isStopped() const { return options_.strict && account_.lost() != 0; }
  TableKey key(Codes codes, Form form) const;

  // The steps of a call, each handing on to the next.
  void find(std::string_view in, bool last, bool& isRefused);
  void declare(std::string_view in, bool last);
  void endDeclaring(bool last);
  void decode(std::string_view in, bool last);
  void decodeCarried(std::string_view& in, bool last);
  void takeThroughStages(bool last);
  std::size_t wholeLines(std::string_view text, bool inUnits, bool last) const;

  const Source asked_;
  const Target target_;
  Options options_;
  bool isStarted_ = false;
  bool isEnded_ = false;
  Account account_;
  Buffer out_;
  std::size_t held_ = 0;  // bytes of it that stay: the beginning of a line, under strict

  // Finding the encoding.
  Source source_;
  std::unique_ptr<Detector> detector_;
  Buffer unfound_;  // input whose encoding is not known yet

  // Rewriting declarations.
  bool isDeclaring_ = false;
  std::size_t searched_ = 0;  // bytes of input among which declarations are looked for

  // Decoding.
  std::unique_ptr<Decoder> decoder_;
  Form form_ = Form::target;
  Buffer carried_;  // the beginning of a character
  std::optional<Buffer> replacement_;

  // From the middle of the way to its end.
  Buffer middle_;
  Buffer staged_[2];
  std::vector<std::unique_ptr<Stage>> stages_;
  std::unique_ptr<Decoder> encoder_;
  Account unheeded_;  // of what is decoded a second time
  const std::optional<Buffer> none_;
};

}  // namespace sgbk::text

#endif
