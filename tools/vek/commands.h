#pragma once

#include <CLI/CLI.hpp>

// Each adds a command to the program.
void addInfo(CLI::App& app);
void addList(CLI::App& app);
void addDiff(CLI::App& app);
void addBackground(CLI::App& app);
void addMotion(CLI::App& app);
void addForeground(CLI::App& app);
void addTrack(CLI::App& app);
void addSuperres(CLI::App& app);
void addStats(CLI::App& app);
void addLocalContrast(CLI::App& app);
void addFilter(CLI::App& app);
void addMorph(CLI::App& app);
void addReconstruct(CLI::App& app);
void addFillHoles(CLI::App& app);
void addEdges(CLI::App& app);
void addDistance(CLI::App& app);
void addUndistort(CLI::App& app);
void addInpaint(CLI::App& app);
void addFill(CLI::App& app);
void addLabel(CLI::App& app);
void addSegment(CLI::App& app);
void addDetect(CLI::App& app);
