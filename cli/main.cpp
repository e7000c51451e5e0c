// sgbk: Chinese text as it is found, to clean simplified GBK.

#include <cstdio>

#include "explain.h"
#include "input.h"
#include "message.h"
#include "options.h"
#include "output.h"
#include "run.h"
#include "version.h"

namespace {

using cli::Status;

Status print(const std::string& text) try {
  cli::Output output("-");
  output.write(text);
  output.finish(false);
  return Status::done;
} catch (const cli::OutputFailure& failure) {
  if (!failure.isQuiet) cli::printMessage(failure.what());
  return Status::failure;
}

Status run(int argc, char** argv) {
  const cli::Options options = cli::parseOptions(argc, argv);
  if (options.has("help")) return print(cli::helpText());
  if (options.has("list")) return print(cli::encodingList());
  if (options.has("version")) return print(cli::versionText());
  if (options.has("explain")) return print(cli::explain(options.value("explain")));
  return cli::convertFiles(options);
}

}  // namespace

int main(int argc, char** argv) {
  cli::occupyClosedStandardStreams();
  Status status;
  try {
    status = run(argc, argv);
  } catch (const cli::UsageError& error) {
    cli::printMessage(error.what());
    std::fputs("Try 'sgbk --help'.\n", stderr);
    status = Status::usage;
  } catch (const std::bad_alloc&) {
    cli::printMessage("not enough memory");
    status = Status::failure;
  } catch (const std::exception& error) {
    cli::printMessage(error.what());
    status = Status::failure;
  }
  return static_cast<int>(status);
}
