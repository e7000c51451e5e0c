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
  void convert(std::string_view in, bool last);
  // What has become of it, also after Failure; the next piece takes its place.
  std::string_view output();
  void reset();

  const Account& account() const { return account_; }
  Source source() const { return source_; }

 private:
  void start();
  void setSource(Source source);
  void setForm();
  TableKey key(Codes codes) const;
  bool hasMiddle() const { return undeclared_ != 0 || !stages_.empty() || isHeldBefore(); }
  // Whether strict holds lines before they are encoded: in gbk-wide a line feed is written as other
  // characters are, too.
  bool isHeldBefore() const { return options_.strict && options_.target == Target::gbkWide; }
  bool isStopped() const { return options_.strict && account_.lost() != 0; }

  // The steps of a call, each handing on to the next.
  void find(std::string_view in, bool last);
  void declare(std::string_view in, bool last);
  void endDeclaring(bool last);
  void decode(std::string_view in, bool last);
  void takeThroughStages(bool last);
  std::string_view wholeLines(std::string_view text, bool inUnits, bool last) const;

  const Source asked_;
  Options options_;
  bool isStarted_ = false;
  bool isEnded_ = false;
  bool isWhole_ = false;  // ended without a failure
  Account account_;
  Buffer out_;             // under strict with the beginning of a line, which stays
  std::size_t given_ = 0;  // of it by output()
  std::size_t held_ = 0;   // under strict: bytes of that beginning

  // Finding the encoding.
  Source source_;
  std::unique_ptr<Detector> detector_;
  Buffer unfound_;  // input whose encoding is not known yet

  // Bytes of input yet to come among which declarations are looked for, and rewritten.
  std::size_t undeclared_ = 0;

  // Decoding.
  std::unique_ptr<Decoder> decoder_;
  Buffer carried_;  // the beginning of a character
  Buffer replacement_;

  // From the middle of the way to its end.
  Buffer middle_;
  Buffer staged_[2];
  std::vector<std::unique_ptr<Stage>> stages_;
  std::unique_ptr<Decoder> encoder_;
  Account unheeded_;  // of what is decoded a second time
};

}  // namespace sgbk::text

#endif
