#include <gtest/gtest.h>

#include "VekSchemaJson.h"

using namespace vekmaster;

namespace {

const VekSchemaJson::Json& setting(const VekSchemaJson::Json& schema, const std::string& path) {
    for (const VekSchemaJson::Json& s : schema["settings"]) {
        if (s["path"] == path) {
            return s;
        }
    }
    static const VekSchemaJson::Json kNone;
    return kNone;
}

// The built-in profile bounds the fixed-band equaliser to 20 bands and ranges the
// fade/balance elements one by one; the schema says so where a client looks.
TEST(SchemaJsonTest, BandsAndElementRangesFollowTheProfile) {
    const VekSchemaJson::Json schema = VekSchemaJson::of(
        VekMessageCatalog::shared(), VekSettingsTable::shared(), VekDeviceProfile::builtIn());
    EXPECT_EQ(setting(schema, "Eq.band")["bands"],
              VekSchemaJson::Json::parse(R"({"max": 20, "count": "Eq.bandCount"})"));
    EXPECT_EQ(setting(schema, "EqV2.band")["bands"]["max"], 40);
    EXPECT_EQ(setting(schema, "Gain.fadeBalance")["fields"][0]["limits"],
              VekSchemaJson::Json::parse(R"([{"min": -100, "max": 100, "unit": "", "element": 0},
                                              {"min": -100, "max": 100, "unit": "", "element": 1},
                                              {"min": 0, "max": 100, "unit": "", "element": 2}])"));
    EXPECT_EQ(setting(schema, "Hfe.channel")["range"], "perChannel");
    EXPECT_EQ(setting(schema, "Eq.bandCount")["fields"][0]["limits"], VekSchemaJson::Json::array());
    EXPECT_EQ(schema["features"][0], "Common");
}

}  // namespace
