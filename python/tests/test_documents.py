"""snapshot(), apply() and diff(): vek_master's tuning documents from Python."""

import json
import os
import re
import subprocess

import pytest

import vektuner

from conftest import received


def test_snapshot_is_the_document_vek_master_makes(link, tmp_path):
    document = link.snapshot()
    assert document["format"] == "vek-tuning/1"
    assert document["device"] == {"path": link.device, "version": "A00020001",
                                  "features": ["Common", "EqV2", "Gain", "Hfe", "Speaker", "Vb"],
                                  "eqMode": "flexible", "reverb": False}
    settings = document["settings"]
    assert settings["Gain"]["master"] == -12
    assert settings["EqV2"]["band"]["CF"][7]["value2"] == 4000
    assert len(settings["EqV2"]["band"]["L1"]) == 5
    out = tmp_path / "cli.json"
    cli = subprocess.run([os.environ["VEK_MASTER"], f"--launch={vektuner.default_daemon()}",
                          f"--log={tmp_path / 'cli.log'}", "snapshot", f"--output={out}"],
                         capture_output=True, text=True, timeout=60)
    assert cli.returncode == 0, cli.stderr
    theirs = json.loads(out.read_text())
    assert theirs["settings"] == settings
    assert theirs["notes"] == document["notes"]


def test_change_diff_apply_diff_round_trip(link, tmp_path):
    reference = link.snapshot()
    link.gain.master = -6
    link.gain.set_channel({"CF": -2.5})
    link.eqv2.set_band("CF", 2, value3=-3.5)
    assert [str(d) for d in vektuner.diff(reference, link)] == [
        "Gain.master: -12 -> -6",
        "Gain.channel[CF]: -1 -> -2.5",
        "EqV2.band[CF/2]: value3=0 -> value3=-3.5"]
    first = vektuner.diff(reference, link)[0]
    assert (first.setting, first.a, first.b) == ("Gain.master", -12, -6)

    path = tmp_path / "reference.json"
    path.write_text(json.dumps(reference))
    planned = link.apply(path, dry_run=True)
    assert planned["requests"] == ["Gain SetMaster -12", "Gain SetChannel 0 -0.5 -2 -2.5 -1 -4",
                                   "EqV2 SetBandConfig CF 2 2 125 0 0.707 0 1"]
    assert link.gain.master == -6.0

    result = link.apply(reference)
    assert result["status"] == "OK" and result["failures"] == []
    assert result["changes"] == [
        {"setting": "Gain.master", "from": "-6", "to": "-12"},
        {"setting": "Gain.channel[CF]", "from": "-2.5", "to": "-1"},
        {"setting": "EqV2.band[CF/2]", "from": "value3=-3.5", "to": "value3=0"}]
    assert vektuner.diff(reference, link) == []
    assert vektuner.diff(link, str(path)) == []


def test_documents_compare_without_a_device():
    a = {"format": "vek-tuning/1", "settings": {"Gain": {"master": -3, "channel": {"LF": 0}}}}
    b = {"format": "vek-tuning/1", "settings": {"Gain": {"master": -3.0000001}}}
    assert [str(d) for d in vektuner.diff(a, b)] == ["Gain.channel[LF]: 0 -> (absent)"]


@pytest.mark.parametrize("document, problem", [
    ({"format": "vek-tuning/2", "settings": {}}, 'format: expected "vek-tuning/1", found "vek-tuning/2"'),
    ({"format": "vek-tuning/1", "settings": {"EqV2": {"band": {"CF": [None] * 7 + [{"value3": "x"}]}}}},
     "settings.EqV2.band.CF[7]: has no value1"),
    ({"format": "vek-tuning/1", "settings": {"Gain": {"channel": {"XX": 1}}}},
     "settings.Gain.channel: unknown channel XX"),
    ({"format": "vek-tuning/1", "settings": {"Gain": {"master": object()}}},
     "the document: a value of type object is not a number"),
])
def test_a_bad_document_is_refused_before_anything_is_sent(shared_link, document, problem):
    before = shared_link.traffic
    with pytest.raises(ValueError, match=re.escape(problem)):
        shared_link.apply(document)
    assert shared_link.traffic == before


def test_a_feature_the_device_does_not_serve_sets_nothing(link):
    result = link.apply({"format": "vek-tuning/1",
                         "settings": {"Gain": {"master": -1}, "Reverb": {"mode": 2}}})
    assert result["status"] == "NG"
    assert result["error"].startswith("the device does not serve Reverb")
    assert not [frame for frame in received(link) if ":Set" in frame]


def test_launch_with_a_document_makes_a_device_holding_it(tmp_path):
    path = tmp_path / "tuning.json"
    path.write_text(json.dumps({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": -9}, "Reverb": {"mode": 2},
        "Eq": {"band": {"RF": [None, {"value1": 1, "value2": 900, "value3": 4, "value4": 2,
                                      "value5": 0, "value6": 0}]}}}}))
    with vektuner.launch(document=path) as link:
        settings = link.snapshot()["settings"]
        # The fixed equaliser and Reverb were asked for by what the document holds.
        assert settings["Gain"]["master"] == -9
        assert settings["Reverb"]["mode"] == 2
        assert settings["Eq"]["band"]["RF"][1] == {"value1": 1, "value2": 900, "value3": 4,
                                                   "value4": 2, "value5": 0, "value6": 0}
    assert json.loads(path.read_text())["settings"]["Gain"]["master"] == -9
    with pytest.raises(vektuner.DaemonError, match="did not take the tuning"):
        vektuner.launch(document=path, sim="fail=setMasterGain:-5")
