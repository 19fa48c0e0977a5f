#pragma once

#include <string>
#include <vector>

#include "VekFilterList.h"
#include "VekResponseCurve.h"

namespace vekmaster {

// A channel's bands as filter text in either form, read back by VekFilterParser to the
// same bands: numbers as short as they can be while a float still reads back the same.
class VekFilterWriter {
public:
    // notes goes into the Filter Settings form's header; the APO form has it as a comment.
    static std::string write(const std::vector<VekResponseCurve::Band>& bands,
                             const VekDeviceProfile& profile, VekFilterList::Form form,
                             const std::string& notes);
    // The shortest text of value with at least decimals places that reads back as the
    // same float.
    static std::string decimal(double value, int decimals);
};

}  // namespace vekmaster
