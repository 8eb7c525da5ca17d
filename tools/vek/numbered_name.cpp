#include "numbered_name.h"

#include "picture_file.h"

NumberedName::NumberedName(const std::string& pattern) {
    checkPictureName(pattern);
    const size_t percent = pattern.find('%');
    const size_t letter = pattern.find_first_not_of("0123456789", percent == std::string::npos ? 0 : percent + 1);
    if (percent == std::string::npos || letter == std::string::npos || pattern[letter] != 'd' || letter > percent + 3 ||
        pattern.find('%', letter) != std::string::npos)
        throw UsageError(pattern, "the name needs one %d for the number of the frame, as in motion-%03d.png");
    before_ = pattern.substr(0, percent);
    after_ = pattern.substr(letter + 1);
    const std::string width = pattern.substr(percent + 1, letter - percent - 1);
    width_ = width.empty() ? 1 : std::stoul(width);
}

std::string NumberedName::operator()(int number) const {
    const std::string digits = std::to_string(number);
    return before_ + std::string(width_ > digits.size() ? width_ - digits.size() : 0, '0') + digits + after_;
}
