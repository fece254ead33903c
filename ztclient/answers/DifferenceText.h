#pragma once

#include <string>

#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/answers/Json.h"

/// How differences of files are put into words.
namespace differenceText {

/// "1 line", "3 lines".
std::string counted(int64_t count, const char* one, const char* many);
/// With four significant digits.
std::string rounded(double number);
/// The column of a field in the file that has it, and what it is called.
int64_t columnOf(const differences::Field& field);
std::string nameOf(const differences::Field& field);
/// "absolute 1e-05, relative 1e-05, 5 digits agree, within tolerance".
std::string measuresOf(const differences::Field& field);
/// "1 field differs, …; largest absolute 0.25, largest relative 0.07692".
std::string of(const differences::Summary& sums);
Json toJson(const differences::Summary& sums);
/// Which numbers are near enough: "5 significant digits or absolute 0.001".
std::string toleranceOf(const differences::Options& how);

}  // namespace differenceText
