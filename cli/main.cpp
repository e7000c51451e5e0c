// sgbk: Chinese text as it is found, to clean simplified GBK.

#include <cstdio>

#include "convert.h"
#include "explain.h"
#include "files.h"
#include "options.h"
#include "version.h"

namespace {

using cli::Status;

Status print(const std::string& text) {
  try {
    cli::Output output;
    output.write(text);
    output.commit();
    return Status::done;
  } catch (const cli::OutputFailure& failure) {
    if (!failure.isQuiet) cli::printMessage(failure.what());
    return Status::failure;
  }
}

Status run(int argc, char** argv) {
  const cli::Options options = cli::parseOptions(argc, argv);
  if (options.help) return print(cli::helpText());
  if (options.list) return print(cli::encodingList());
  if (options.version) return print(cli::versionText());
  if (EncodingConvertor::initializeInstance(nullptr) != 0) {
    cli::printMessage("not enough memory");
    return Status::failure;
  }
  EncodingConvertor& converter = *EncodingConvertor::getInstance();
  if (options.explain) return print(cli::explain(converter, *options.explain));
  return cli::convertFiles(converter, options);
}

}  // namespace

int main(int argc, char** argv) {
  cli::occupyClosedStandardStreams();
  Status status;
  try {
    status = run(argc, argv);
  } catch (const cli::UsageError& error) {
    cli::printMessage(std::string(error.what()) + "\nTry 'sgbk --help'.");
    status = Status::usage;
  } catch (const std::exception& error) {
    cli::printMessage(error.what());
    status = Status::failure;
  }
  EncodingConvertor::clear();
  return static_cast<int>(status);
}
