#pragma once

#include <QStringList>

// Each subcommand takes the words after its name and returns the exit code;
// bad input is thrown as cli::Error.
int runDeltaE(const QStringList& args);
int runEngineCommand(const QStringList& args);
int runFindChart(const QStringList& args);
int runAnalyze(const QStringList& args);
int runCameras(const QStringList& args);
int runGrab(const QStringList& args);
int runSettings(const QStringList& args);
int runCalibrate(const QStringList& args);
