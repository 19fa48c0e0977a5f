#pragma once

#include <memory>

#include "VekApiRoutes.h"
#include "VekDeviceProfile.h"
#include "VekRouteTable.h"
#include "VekSettingAccess.h"
#include "VekSettingsTable.h"

namespace vekserve {

// A setting of the table by its address, beside /request:
// /api/devices/N/settings/FEATURE/SETTING[/CHANNEL[/BAND]]. GET reads it, PUT writes it
// or the part of it given; the server reads what the part leaves out. The setting,
// channel, band and value are checked here, the ranges once the whole value is known.
class VekSettingRoutes {
public:
    using ExchangePtr = VekApiRoutes::ExchangePtr;
    using Params = VekRouteTable::Params;

    // Adds the routes to table; api queues their jobs on its lines and must outlive them.
    VekSettingRoutes(VekApiRoutes& api, VekRouteTable& table,
                     std::shared_ptr<const vekmaster::VekDeviceProfile> limits);
    VekSettingRoutes(const VekSettingRoutes&) = delete;
    VekSettingRoutes& operator=(const VekSettingRoutes&) = delete;

private:
    void read(const ExchangePtr& exchange, const Params& params);
    void write(const ExchangePtr& exchange, const Params& params);
    // Several settings read in one batch: {"answers": [{"status", "body"}, ...]}, each
    // what GET of its address answers.
    void readMany(const ExchangePtr& exchange, const Params& params);
    // The setting the path names; false after answering why there is none.
    bool locate(const ExchangePtr& exchange, const Params& params,
                vekmaster::VekSettingAccess::Target& target) const;
    // {"setting": "EqV2.band[CF/7]", "status": "OK" or "NG"}, and the value when read
    static VekHttpExchange::Json answer(const vekmaster::VekSettingAccess::Target& target,
                                        const vekmaster::VekSettingAccess::Result& result,
                                        bool read);

    VekApiRoutes& api_;
    const std::shared_ptr<const vekmaster::VekDeviceProfile> profile_;
    const vekmaster::VekSettingsTable& table_;
};

}  // namespace vekserve
