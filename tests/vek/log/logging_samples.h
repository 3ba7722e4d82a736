// The samples of docs/logging.md, for the test that runs them.
#pragma once

#include <string>

namespace samples {

void logInAProgram();
void writeStatements();
void setLevels();
void logAttributes();
void addAFile(const std::string& path);
void countErrors();
int errorsCounted();

}  // namespace samples
