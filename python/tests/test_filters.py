"""Filter text through Python: import_filters and export_filters of the equalisers."""

import pytest

FILTERS = """Preamp: -3 dB
Filter 1: ON PK Fc 100 Hz Gain 4 dB Q 1
Filter 2: ON HSC Fc 8000 Hz Gain -2.5 dB Q 0.7
"""


def test_import_sets_the_bands_and_the_export_reads_them_back(link):
    done = link.eqv2.import_filters(FILTERS, "LF,RF")
    assert done["status"] == "OK"
    assert done["apply"]["status"] == "OK"
    assert [c["gain"] for c in done["channels"]] == [{"from": 0, "to": -3},
                                                     {"from": -0.5, "to": -3.5}]
    assert link.eqv2.band_count["LF"] == 2
    assert link.eqv2.band("RF", 1)["value2"] == 8000
    text = link.eqv2.export_filters("LF")
    assert text.splitlines()[1:] == ["Filter 1: ON PK Fc 100 Hz Gain 4 dB Q 1",
                                     "Filter 2: ON HSC Fc 8000 Hz Gain -2.5 dB Q 0.7"]
    again = link.eqv2.import_filters(text, "LF")
    assert again["apply"]["changes"] == []
    assert link.eqv2.export_filters("LF", format="rew").startswith("Filter Settings file\n")


def test_a_misfit_raises_with_every_problem_and_sends_nothing(link):
    with pytest.raises(ValueError) as refused:
        link.eqv2.import_filters("Filter 1: ON PK Fc 5 Hz Gain 30 dB Q 1\nGraphicEQ: 1 2\n", "CF")
    assert str(refused.value) == "filters: line 2: 'GraphicEQ: 1 2' is not a Preamp or Filter line"
    with pytest.raises(ValueError) as misfit:
        link.eqv2.import_filters("Filter 1: ON PK Fc 5 Hz Gain 30 dB Q 1\n", "CF")
    assert str(misfit.value).splitlines() == [
        "filters: line 1: Fc 5 Hz is outside 20 to 20000 Hz (profile default)",
        "filters: line 1: Gain 30 dB is outside -24 to 12 dB (profile default)"]
    assert link.eqv2.band_count["CF"] == 10
    fitted = link.eqv2.import_filters("Filter 1: ON PK Fc 5 Hz Gain 30 dB Q 1\n", "CF", fit=True,
                                      dry_run=True)
    assert [c["text"] for c in fitted["channels"][0]["changes"]] == [
        "line 1: Fc 5 Hz clamped to 20 Hz", "line 1: Gain 30 dB clamped to 12 dB"]
    with pytest.raises(ValueError):
        link.eqv2.import_filters(FILTERS, "LF", preamp="louder")
