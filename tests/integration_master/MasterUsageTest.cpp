#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MasterRun.h"

namespace {

struct BadUsage {
    std::vector<std::string> args;
    std::string complaint;
};

// Refused before anything is opened or started: no daemon log line, no device.
TEST(MasterUsageTest, BadUsageIsRefusedWithWhatWasExpected) {
    const std::string launch = "--launch=" VEK_TUNER_PATH;
    const BadUsage cases[] = {
        {{}, "expected FEATURE MESSAGE [ARG...] or --script=FILE"},
        {{launch}, "expected FEATURE MESSAGE [ARG...] or --script=FILE"},
        {{launch, "Foo", "Bar"},
         "unknown feature 'Foo' (features: Common Gain Reverb Eq EqV2 Hfe Vb Speaker)"},
        {{launch, "Reverb"}, "Reverb needs a MESSAGE (messages: GetEnable GetMode SetMode)"},
        {{launch, "Reverb", "GetModeRequest"},
         "Reverb has no message 'GetModeRequest' (messages: GetEnable GetMode SetMode)"},
        {{launch, "Gain", "SetChannel", "0", "0", "-3"},
         "Gain SetChannel takes 6 arguments (channelGain:float[6]), got 3"},
        {{launch, "Gain", "GetMaster", "-10"}, "Gain GetMaster takes no arguments, got 1"},
        {{launch, "EqV2", "GetBandConfig", "CF"},
         "EqV2 GetBandConfig takes 2 arguments (channel:string band:uint), got 1"},
        {{launch, "EqV2", "GetBandConfig", "CF", "seven"},
         "EqV2 GetBandConfig: the arguments do not read as channel:string band:uint"},
        {{launch, "Common", "SetBypass", "on"},
         "Common SetBypass: the arguments do not read as enable:bool"},
        {{launch, "Reverb", "SetMode", "4294967296"},
         "Reverb SetMode: the arguments do not read as mode:int"},
        {{launch, "Common", "FileContent", "C:/x"},
         "Common FileContent: argument 'C:/x' cannot be sent (it is empty or holds ':' or a line "
         "feed)"},
        {{launch, "Common", "FileList", ""},
         "Common FileList: argument '' cannot be sent (it is empty or holds ':' or a line feed)"},
        {{"--baudRate=1000", "Common", "Feature"},
         "--baudRate=1000 is not a speed of the line (110 300 600 1200 2400 4800 9600 19200 "
         "38400 57600 115200 230400 460800 921600)"},
        {{"--timeout=3s", "Common", "Feature"},
         "--timeout=3s is not a number of milliseconds (1 to 3600000)"},
        {{"--verbose", "Common", "Feature"}, "unknown option --verbose"},
        {{"--device=", "Common", "Feature"}, "--device= needs a value"},
        {{"--script=x", "Common", "Feature"},
         "give either --script or FEATURE MESSAGE [ARG...], not both"},
        {{"--keep-going", "Common", "Feature"}, "--keep-going needs --script"},
        {{"Common", "Feature", "--", "--reverb"}, "--log and DAEMON-ARGS need --launch"},
        {{"--device=/dev/null", launch, "Common", "Feature"},
         "--device and --launch exclude each other"},
        {{launch, "snapshot", "x"},
         "snapshot takes no operands (the document goes to --output=FILE)"},
        {{launch, "apply"}, "apply takes one document: apply FILE"},
        {{launch, "diff", "device", "device"},
         "diff compares the device with a document, or two documents"},
        {{launch, "--dry-run", "Gain", "GetMaster"}, "--dry-run goes with apply and eq import"},
        {{"--script=x", "--bypass"}, "--dry-run and --bypass go on the script line of their apply"},
        {{launch, "eq", "import", "f.txt"},
         "eq import takes one filter file and the channels: eq import FILE --channel=CH[,CH...]"},
        {{launch, "eq", "import", "f.txt", "--channel=LF,XX"},
         "eq import: no channel XX (channels: LF RF LS RS CF L1)"},
        {{launch, "eq", "import", "f.txt", "--channel=LF", "--preamp=louder"},
         "eq import: --preamp=louder is not channel, master or ignore"},
        {{launch, "eq", "export", "LF", "--format=csv"}, "eq export: --format=csv is not apo or rew"},
        {{launch, "apply", "f.json", "--fit"},
         "--svg, --csv, --document and --points go with curve; --channel, --fit, --preamp and "
         "--format with eq"},
        {{"--device=a", "--device=a", "Common", "Feature"}, "a is named twice"},
        {{"--device=a", "--device=b", "snapshot"},
         "with several devices, a snapshot needs --output=DIR, an existing directory"},
    };
    for (const BadUsage& c : cases) {
        const MasterRun::Result r = MasterRun::run(c.args);
        EXPECT_EQ(r.status, 64) << c.complaint;
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "vek_master: " + c.complaint + '\n' + MasterRun::kTryHelp);
    }
}

TEST(MasterUsageTest, EveryBadScriptLineIsNamedAndNothingIsSent) {
    MasterRun::TempFile script(
        "Common Version M1.0\n"
        "Gain SetMaster\n"
        "# fine\n"
        "Common FileContent /etc/hostname --output=x --json\n"
        "Speaker SetSinePattern LF 1000\n");
    const MasterRun::Result r =
        MasterRun::run({"--launch=" VEK_TUNER_PATH, "--script=" + script.path()});
    EXPECT_EQ(r.status, 64);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err,
              "vek_master: " + script.path() +
                  ":2: Gain SetMaster takes 1 argument (masterGain:float), got 0\n"
                  "vek_master: " +
                  script.path() +
                  ":4: a script line takes no option but --output=FILE, --dry-run, --bypass, "
                  "--svg=FILE, --csv, --document=FILE, --channel=, --fit, --preamp= and --format=, not "
               "--json\n" +
                  MasterRun::kTryHelp);
}

TEST(MasterUsageTest, HelpListsEveryMessageWithItsArguments) {
    const MasterRun::Result r = MasterRun::run({"--help", "--bogus"});
    EXPECT_EQ(r.status, 0);
    for (const char* line : {
             "\n  Common Version version:string\n  Common Feature\n",
             "\n  Gain SetFadeBalance fadeBalance:int[3]\n",
             "\n  Eq GetBandCount\n  Eq GetBandConfig channel:string band:uint\n",
             "\n  EqV2 SetBandConfig channel:string band:uint value1:int value2:int "
             "value3:float value4:float value5:int value6:int\n",
             "\n  Vb SetChannelConfig channel:string flag:bool number:int params:float[18]\n",
             "\n  Speaker SetEnable enable:bool[6]\n",
             "\n  Speaker SetSinePattern channel:string frequency:int\n\n",
         }) {
        EXPECT_NE(r.out.find(line), std::string::npos) << line;
    }
}

TEST(MasterUsageTest, ALineThatCannotBeOpenedIsAnInputOutputFailure) {
    const MasterRun::Result r = MasterRun::run({"--device=/dev/null", "Common", "Feature"});
    EXPECT_EQ(r.status, 74);
    EXPECT_EQ(r.err, "vek_master: cannot configure /dev/null: Inappropriate ioctl for device\n");
}

}  // namespace
