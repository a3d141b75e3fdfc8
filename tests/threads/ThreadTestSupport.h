// Log capture and polling helpers for the thread and task tests.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace ZuThreadTest {

// Routes the process-wide logger into memory for the test program's life
// (a gtest environment sets it up once).
void InstallLogCapture();
std::vector<std::string> CapturedLines();
void ClearCapturedLines();
// How many captured lines contain `part`.
int CountLines(const std::string& part);

// Polls `condition` every millisecond until it holds or `limit` passes.
bool WaitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::milliseconds(5000));

}  // namespace ZuThreadTest
