#pragma once

#include <string>

/** Names of pictures from a pattern with one %d or %03d. */
class NumberedName {
  public:
    /** Throws UsageError for another text, and where writePicture could not write a file of such a name. */
    explicit NumberedName(const std::string& pattern);

    std::string operator()(int number) const;

  private:
    std::string before_, after_;
    size_t width_ = 1;
};
