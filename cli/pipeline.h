// The stages, in the one order in which they run.

#ifndef SGBK_CLI_PIPELINE_H
#define SGBK_CLI_PIPELINE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "chunker.h"
#include "decoder.h"
#include "loss_report.h"
#include "options.h"
#include "stage.h"

namespace cli {

// Converts one input, piece by piece.
class Pipeline {
 public:
  // source  the encoding, known by now
  Pipeline(EncodingConvertor& converter, const Options& options, Source source);

  // How the pieces have to be cut.
  Cut cut() const;

  // Appends what becomes of `piece` to `out` and returns how much of it was used.
  std::size_t convert(std::string_view piece, bool ended, std::string& out, LossReport& losses);

 private:
  void reportUnencoded(std::string_view piece, LossReport& losses);

  EncodingConvertor& converter_;
  const Source source_;
  const bool simplify_;
  const bool strict_;
  Form form_ = Form::lines;
  std::unique_ptr<Decoder> decoder_;
  std::vector<std::unique_ptr<Stage>> stages_;
  std::vector<Unencoded> unencoded_;
  std::string from_;
  std::string to_;
};

}  // namespace cli

#endif
