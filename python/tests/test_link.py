"""Link, request() and the typed helpers against a launched daemon."""

import json
import os
import re
import stat
import threading

import pytest

import vektuner
from vektuner import _vektuner

from conftest import SHORT_TIMEOUT, daemon_log, received


def test_request_gives_fields_status_and_numbers(link):
    first = link.request("Gain", "GetMaster")
    assert (first.status, first.ok, first.masterGain, first["masterGain"]) == ("OK", True, -12.0, -12.0)
    assert isinstance(first.masterGain, float)
    assert (first.feature, first.message, first.raw, first.raw_length) == \
        ("Gain", "GetMasterResponse", b"", 0)
    channels = link.request("Gain", "GetChannel")
    assert channels.channelGain == [0.0, -0.5, -2.0, -2.5, -1.0, -4.0]
    assert (first.self_number, channels.self_number) == (1, 2)
    assert received(link) == ["AS:1:0:Gain:GetMasterRequest:0:OK:",
                              "AS:2:0:Gain:GetChannelRequest:0:OK:"]
    with pytest.raises(AttributeError, match="fields: channelGain"):
        channels.masterGain


def test_a_field_of_several_values_takes_a_sequence_or_the_values(link):
    link.request("Gain", "SetChannel", 0, 0, -3, -3, 1.5, 0)
    link.request("Gain", "SetChannel", [0, 0, -3, -3, 1.5, 0.25])
    link.request("EqV2", "SetBandConfig", "CF", 7, 2, 1000, -3.5, 0.707, 0, 1)
    assert received(link) == [
        "AS:1:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0>:",
        "AS:2:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0.25>:",
        "AS:3:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:1000:-3.5:0.707:0:1>:"]


@pytest.mark.parametrize("args, message", [
    (("Gain", "SetChannel", 1, 2), "Gain SetChannel takes 6 arguments (channelGain:float[6]), got 2"),
    (("Gain", "SetChannel", [1, 2]), "channelGain takes 6 values, got 2"),
    (("Gain", "SetMaster", "-3"), "masterGain is not a number a float can hold (expects masterGain:float)"),
    (("Gain", "SetMaster", -3, 4), "takes 1 argument (masterGain:float), got 2"),
    (("Gain", "SetMaster", float("nan")), "masterGain is not a number a float can hold"),
    (("Gain", "SetMaster", b"1"), "argument 1: a value of type bytes is not a number"),
    (("EqV2", "SetBandConfig", "CF", 7, 2, 1000, -3.5, 0.707, 0, 1.5), "value6 is not an integer"),
    (("EqV2", "GetBandConfig", "CF", -1), "band is out of range (0 to 4294967295)"),
    (("Common", "FileContent", "a:b"), "cannot be sent (it is empty or holds ':'"),
    (("Common", "SetBypass", 1), "enable is not true or false"),
    (("Gain", "Louder"), "Gain has no message 'Louder' (messages: GetMaster SetMaster"),
    (("Loudness", "GetMaster"), "unknown feature 'Loudness' (features: Common Gain"),
    (("Gain", "SetMaster", 60), "Gain SetMaster masterGain 60 is outside -60 to 12 dB (profile default)"),
])
def test_bad_arguments_raise_value_error_and_send_nothing(shared_link, args, message):
    before = shared_link.traffic, daemon_log(shared_link).count("+RECV")
    with pytest.raises(ValueError) as raised:
        shared_link.request(*args)
    assert message in str(raised.value)
    assert (shared_link.traffic, daemon_log(shared_link).count("+RECV")) == before


@pytest.mark.parametrize("call, message", [
    (lambda l: l.eqv2.set_band("XX", 1, value1=3), "EqV2.band: channel 'XX' is not one of LF RF"),
    (lambda l: l.eqv2.band("CF", 40), "EqV2.band: band 40 is not 0 to 39"),
    (lambda l: l.eqv2.set_band("CF", 1, value1=3.5), "EqV2.band[CF/1]: value1 is not an integer"),
    (lambda l: l.eqv2.set_band("CF", 1, {"value7": 1}), "has an unknown field value7"),
    (lambda l: l.eqv2.set_band("CF", 1), "give the value as item or some of its fields"),
    (lambda l: l.gain.set_channel({"XY": 1}), "unknown channel XY (channels: LF RF LS RS CF L1)"),
    (lambda l: l.gain.set_channel([1, 2, 3]), "is not a mapping by channel"),
    (lambda l: l.gain.set_channel(1, 2, 3), "is not a mapping by channel"),
    (lambda l: setattr(l.gain, "master", "loud"), "Gain.master: is not a number a float can hold"),
    (lambda l: l.vb.set_channel("LF", params=[1.0] * 17), "params is not an array of 18 float"),
    (lambda l: l.speaker.set_sine_pattern("LF", 2**31), "frequency is out of range"),
    (lambda l: setattr(l.gain, "master", 13), "Gain SetMaster masterGain 13 is outside -60 to 12 dB"),
    (lambda l: l.apply({"format": "vek-tuning/1", "settings": {"Gain": {"master": 13}}}),
     "Gain.master: Gain SetMaster masterGain 13 is outside -60 to 12 dB (profile default)"),
])
def test_helpers_refuse_bad_values_before_sending(shared_link, call, message):
    before = shared_link.traffic
    with pytest.raises(ValueError, match=re.escape(message)):
        call(shared_link)
    assert shared_link.traffic == before


def test_a_helper_called_with_the_wrong_arguments_is_a_type_error(shared_link):
    with pytest.raises(TypeError, match=r"^EqV2.set_band\(\): missing a required argument: 'band'$"):
        shared_link.eqv2.set_band("CF")
    with pytest.raises(TypeError, match="unexpected keyword argument 'value7'"):
        shared_link.eqv2.set_band("CF", 1, value7=1)


def test_the_profile_in_use_decides_what_is_refused(shared_link, tmp_path):
    profile = tmp_path / "quiet.json"
    profile.write_text(json.dumps({"name": "quiet", "band": {
        "type": 0, "frequency": 1, "gain": 2, "q": 3, "types": {"2": "peaking"}}, "limits": [
        {"feature": "Gain", "message": "SetMaster", "field": "masterGain", "min": -80, "max": -20,
         "unit": "dB"}]}))
    try:
        assert vektuner.use_profile(profile) == "quiet"
        with pytest.raises(ValueError, match=re.escape(
                "Gain SetMaster masterGain -10 is outside -80 to -20 dB (profile quiet)")):
            shared_link.gain.master = -10
        shared_link.gain.master = -70
        assert shared_link.gain.master == -70
        # A file that is no profile leaves the one in use.
        (tmp_path / "bad.json").write_text('{"name": "bad", "limits": [{"feature": "Gain"}]}')
        with pytest.raises(ValueError, match="bad.json"):
            vektuner.use_profile(tmp_path / "bad.json")
        with pytest.raises(FileNotFoundError):
            vektuner.use_profile(tmp_path / "none.json")
        with pytest.raises(ValueError, match=re.escape("(profile quiet)")):
            shared_link.request("Gain", "SetMaster", 0)
    finally:
        assert vektuner.use_profile(None) == "default"
    shared_link.gain.master = -10
    assert shared_link.gain.master == -10


def test_force_sends_a_value_out_of_range_and_warns(launched):
    link = launched(force=True)
    with pytest.warns(UserWarning, match=re.escape(
            "Gain SetMaster masterGain 20 is outside -60 to 12 dB (profile default); "
            "sending it anyway")):
        link.gain.master = 20
    assert received(link)[-1].endswith(":Gain:SetMasterRequest:0:OK:<20>:")
    with pytest.warns(UserWarning, match="masterGain 30 is outside"):
        assert link.request("Gain", "SetMaster", 30).ok
    # Documents are checked whatever force says.
    with pytest.raises(ValueError, match="Gain.master: Gain SetMaster masterGain 13"):
        link.apply({"format": "vek-tuning/1", "settings": {"Gain": {"master": 13}}})


def _key(setting):
    return {"one": (), "channel_array": (), "per_channel": ("CF",),
            "per_band": ("CF", 7)}[setting["range"]]


def _fields_of(setting, response):
    """A setting's value in a get answer, as the helper gives it."""
    names = [f["name"] for f in setting["value"]]
    if setting["range"] == "channel_array":
        return dict(zip(vektuner.CHANNELS, response.fields[names[0]]))
    if len(names) == 1:
        return response.fields[names[0]]
    return {n: response.fields[n] for n in names}


@pytest.mark.parametrize("args", [(), ("--eqMode=1", "--reverb")], ids=["EqV2", "Eq+Reverb"])
def test_every_getter_gives_what_request_gives(launched, args):
    link = launched(args=args)
    served = link.features
    for setting in _vektuner.settings():
        if setting["feature"] not in served or setting["disturbs"]:
            continue
        helpers = getattr(link, setting["feature"].lower())
        getter = getattr(helpers, vektuner._helpers.snake(setting["name"]))
        key = _key(setting)
        value = getter(*key) if key else getter
        response = link.request(setting["feature"], setting["get"], *key)
        assert value == _fields_of(setting, response), setting


def test_setters_send_the_set_message_with_the_device_values_they_keep(link):
    link.gain.master = -10
    link.gain.set_channel({"LF": -3})
    link.eqv2.set_band("CF", 7, value3=-3.5)
    link.hfe.set_channel("LS", {"flag1": True, "flag2": False, "flag3": True, "value": 0.25},
                         value=0.5)
    link.speaker.enable = [True, False, True, False, True, False]
    link.gain.fade_balance = [2, -1, 15]
    sets = [frame for frame in received(link) if ":Set" in frame]
    assert sets == [
        "AS:1:0:Gain:SetMasterRequest:0:OK:<-10>:",
        "AS:3:0:Gain:SetChannelRequest:0:OK:<-3:-0.5:-2:-2.5:-1:-4>:",
        "AS:5:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:4000:-3.5:0.707:0:1>:",
        "AS:6:0:Hfe:SetChannelConfigRequest:0:OK:<LS:1:0:1:0.5>:",
        "AS:7:0:Speaker:SetEnableRequest:0:OK:<1:0:1:0:1:0>:",
        "AS:8:0:Gain:SetFadeBalanceRequest:0:OK:<2:-1:15>:"]
    assert (link.gain.master, link.gain.channel["LF"], link.eqv2.band("CF", 7)["value3"]) == \
        (-10.0, -3.0, -3.5)
    assert link.hfe.channel("LS") == {"flag1": True, "flag2": False, "flag3": True, "value": 0.5}
    assert link.gain.fade_balance == [2, -1, 15]
    # Six values one by one, as the setter's six-element list.
    link.gain.set_channel(0, -0.5, -2, -2.5, -1, -4)
    last = [frame for frame in received(link) if ":Set" in frame][-1]
    assert last.split(":", 2)[2] == "0:Gain:SetChannelRequest:0:OK:<0:-0.5:-2:-2.5:-1:-4>:"


def test_message_helpers(launched):
    link = launched(args=["--reverb"])
    assert link.common.version() == "A00020001"
    assert link.features == ["Common", "EqV2", "Gain", "Hfe", "Reverb", "Speaker", "Vb"]
    files = link.common.file_list("Gain")
    assert files.files == ["/media/flash/nvm/mixhub/volume_property.xml"]
    assert link.speaker.set_sine_pattern("LF", 1000) is None
    assert link.speaker.set_style_pattern("CF", 2) is None
    link.reverb.mode = 3
    assert link.reverb.mode == 3
    assert link.reverb.get_enable() in (True, False)
    frames = received(link)
    assert frames[0] == "AS:1:0:Common:VersionRequest:0:OK:<vektuner>:"
    assert "AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:1000>:" in frames


def test_ng_from_an_injected_library_failure(launched):
    link = launched(sim="fail=getMasterGain:-5;fail=setChannelGain:-1")
    with pytest.raises(vektuner.NG) as raised:
        link.gain.master
    assert raised.value.response.status == "NG"
    assert str(raised.value) == "Gain GetMasterResponse: the device answered NG"
    plain = link.request("Gain", "GetMaster")
    assert (plain.status, plain.ok) == ("NG", False)
    with pytest.raises(vektuner.NG):
        link.gain.set_channel([0, 0, 0, 0, 0, 0])
    assert link.snapshot()["settings"]["Gain"]["master"] == {"missing": "NG"}
    assert link.gain.channel["RF"] == -0.5


def test_an_unserved_feature_times_out_and_the_link_goes_on(launched):
    link = launched(timeout=SHORT_TIMEOUT)
    with pytest.raises(vektuner.Timeout, match="no answer to Reverb GetMode within 500 ms"):
        link.reverb.mode
    with pytest.raises(TimeoutError):
        link.request("Reverb", "SetMode", 1)
    assert link.gain.master == -12.0


def test_request_many_answers_each_in_order_as_request_would(launched):
    link = launched(window=4)
    wanted = [("Gain", "GetMaster"), ("EqV2", "GetBandConfig", "CF", 3),
              ("Gain", "SetMaster", -6), ("Gain", "GetMaster"), ("Speaker", "GetDelay")]
    many = link.request_many(wanted)
    assert [(r.message, r.status) for r in many] == [
        ("GetMasterResponse", "OK"), ("GetBandConfigResponse", "OK"),
        ("SetMasterResponse", "OK"), ("GetMasterResponse", "OK"), ("GetDelayResponse", "OK")]
    assert (many[0].masterGain, many[1].band, many[3].masterGain) == (-12.0, 3, -6.0)
    assert many[4].delay == link.request("Speaker", "GetDelay").delay
    with pytest.raises(ValueError, match="Gain SetMaster"):
        link.request_many([("Gain", "GetMaster"), ("Gain", "SetMaster", "loud")])
    with pytest.raises(ValueError, match="window 0 is not 1 to 64"):
        launched(window=0)
    # A message the device does not serve is never answered: the others still are.
    short = launched(timeout=SHORT_TIMEOUT)
    with pytest.raises(vektuner.Timeout, match="Reverb GetMode"):
        short.request_many([("Gain", "GetMaster"), ("Reverb", "GetMode")])
    assert short.gain.master == -12.0


def test_other_threads_run_while_a_request_waits(launched):
    silent = launched(timeout=2)
    busy = launched()
    waiting = threading.Event()
    outcome = []

    def wait_for_silence():
        waiting.set()
        try:
            silent.request("Reverb", "GetMode")
        except vektuner.Timeout:
            outcome.append("timeout")

    thread = threading.Thread(target=wait_for_silence)
    thread.start()
    waiting.wait()
    answers = [busy.gain.master for _ in range(50)]
    # 50 round trips on the other link while the first thread still waits its 2 s.
    assert thread.is_alive()
    thread.join()
    assert answers == [-12.0] * 50 and outcome == ["timeout"]


def test_threads_sharing_a_link_take_turns(link):
    results = []

    def read():
        results.extend(link.gain.master for _ in range(40))

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [-12.0] * 160
    assert link.traffic.requests == 160


def test_link_on_a_serial_line(cabled_daemon):
    with vektuner.Link(cabled_daemon, baud_rate=921600) as link:
        assert link.device == cabled_daemon
        assert link.gain.master == -12.0
    assert link.closed
    with pytest.raises(vektuner.Error, match="the link is closed"):
        link.gain.master


def test_a_line_that_cannot_be_opened(tmp_path):
    with pytest.raises(vektuner.LineError, match="cannot open .*: No such file"):
        vektuner.Link(tmp_path / "ttyUSB9")
    with pytest.raises(OSError):
        vektuner.Link(tmp_path / "ttyUSB9")
    with pytest.raises(ValueError, match="baud_rate 1000 is not one of"):
        vektuner.Link(tmp_path / "ttyUSB9", baud_rate=1000)
    with pytest.raises(ValueError, match="timeout 0 is not a number of seconds"):
        vektuner.Link(tmp_path / "ttyUSB9", timeout=0)


FAKE_DAEMON = """#!/bin/sh
# Greets on the line it is given, then ends with status 3 when asked to stop.
for arg; do device=${arg#--device=}; done
# The trap before the greeting: the stop may come as soon as the greeting is read.
trap 'exit 3' USR1
printf 'HELLO!\\n' > "$device"
while :; do sleep 0.05; done
"""


def test_launch_reports_how_the_daemon_ended(tmp_path):
    with vektuner.launch(log=tmp_path / "log") as link:
        assert link.daemon_log == str(tmp_path / "log")
        assert daemon_log(link).startswith("[AST][INF]Starting vek_tuner.")
    assert daemon_log(link).endswith("[AST][INF]Ending vek_tuner.\n")

    fake = tmp_path / "fake_daemon"
    fake.write_text(FAKE_DAEMON)
    fake.chmod(stat.S_IRWXU)
    with pytest.raises(vektuner.DaemonError, match="daemon exited with status 3"):
        with vektuner.launch(fake):
            pass
    # An error in the block is the one that propagates.
    with pytest.raises(KeyError):
        with vektuner.launch(fake):
            raise KeyError("the script's own")
    with pytest.raises(vektuner.DaemonError, match="cannot run .*/nowhere"):
        vektuner.launch(tmp_path / "nowhere")


def test_sim_items_reach_the_daemon_only(launched):
    link = launched(sim=["absent=hfe,vb"])
    assert link.features == ["Common", "EqV2", "Gain", "Speaker"]
    assert "AUDIO_SETTING_SIM" not in os.environ
