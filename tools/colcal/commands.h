#pragma once

#include "cli.h"

// Each subcommand takes its parsed words and returns the exit code; bad input
// is thrown as cli::Error.
int runDeltaE(const cli::Args& args);
int runEngineCommand(const cli::Args& args);
int runFindChart(const cli::Args& args);
int runAnalyze(const cli::Args& args);
int runCameras(const cli::Args& args);
int runGrab(const cli::Args& args);
int runSettings(const cli::Args& args);
int runCalibrate(const cli::Args& args);
