"""Raw data: a setting file of any size, in memory or streamed to a file."""

import os

import pytest

import vektuner


def test_a_1mb_file_arrives_intact(shared_link, tmp_path):
    data = os.urandom(1 << 20)
    source = tmp_path / "big.bin"
    source.write_bytes(data)
    assert shared_link.common.file_content(str(source)) == data
    response = shared_link.request("Common", "FileContent", str(source))
    assert (response.path, response.raw_length, response.raw == data) == \
        (str(source), 1 << 20, True)
    copy = tmp_path / "copy.bin"
    assert shared_link.common.file_content(str(source), output=str(copy)) == 1 << 20
    assert copy.read_bytes() == data


def test_a_file_the_device_cannot_read_comes_back_empty(shared_link, tmp_path):
    # The daemon answers OK with no bytes; the script has to tell that from an empty file.
    copy = tmp_path / "copy.bin"
    assert shared_link.common.file_content(str(tmp_path / "absent"), output=str(copy)) == 0
    assert copy.read_bytes() == b""
    assert shared_link.common.file_content(str(tmp_path / "absent")) == b""
