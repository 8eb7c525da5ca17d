#include "vekcore.h"

const char* vekGetStatusString(Status status) {
    switch (status) {
        case StatusOk:
            return "StatusOk: success";
        case StatusDivideByZeroWarning:
            return "StatusDivideByZeroWarning: the divisor is zero; the result is infinite or not a number";
        case StatusBufferSizeWarning:
            return "StatusBufferSizeWarning: the buffer size does not fit its type and was stored wrapped";
        case StatusCountOverflow:
            return "StatusCountOverflow: the number of points does not fit its type";
        case StatusBadArgument:
            return "StatusBadArgument: a parameter is outside the set of values that it may have";
        case StatusSizeError:
            return "StatusSizeError: a width, a height or another size is outside its range";
        case StatusRangeError:
            return "StatusRangeError: the lower end of a range is above its upper end";
        case StatusNullPointer:
            return "StatusNullPointer: a required pointer is null";
        case StatusMemoryAllocation:
            return "StatusMemoryAllocation: there is not enough memory";
        case StatusOutOfRange:
            return "StatusOutOfRange: a point, an index or a value is outside its range";
        case StatusDataTypeError:
            return "StatusDataTypeError: the element type is not supported";
        case StatusStepError:
            return "StatusStepError: a row step is smaller than a row";
        case StatusMaskSizeError:
            return "StatusMaskSizeError: the kernel size is not supported";
        case StatusAnchorError:
            return "StatusAnchorError: the anchor is outside the kernel";
        case StatusChannelOfInterestError:
            return "StatusChannelOfInterestError: the channel of interest is not 1, 2 or 3";
        case StatusChannelError:
            return "StatusChannelError: the number of channels is not supported";
        case StatusMetricError:
            return "StatusMetricError: a distance metric is below 1";
        case StatusStepNotMultiple:
            return "StatusStepNotMultiple: a row step is not a whole number of elements";
        default:
            return "unknown status";
    }
}
