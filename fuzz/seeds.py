#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into fuzz/corpus/<target>/."""
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))


def write(target, name, data):
    folder = os.path.join(HERE, "corpus", target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as out:
        out.write(data)


def ints(*values):
    return struct.pack("<%di" % len(values), *values)


# The layer stream: 47 records (kinds 1 to 13, then each texture channel twice), each
# a 32-bit kind and a presence byte, then the element's content when present.
RECORD_KINDS = list(range(1, 14)) + [k for k in range(14, 31) for _ in (0, 1)]


def element(direct, width, indices, mapping, name):
    data = ints(len(direct) // width) + direct + ints(len(indices)) + ints(*indices)
    return data + ints(mapping, 2 if indices else 0, len(name)) + name


def layer(contents):
    data = b""
    for position, kind in enumerate(RECORD_KINDS):
        content = contents.get(position)
        data += ints(kind) + (b"\x01" + content if content is not None else b"\x00")
    return data


normals = struct.pack("<12d", 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0)
write("qellayerstream_fuzz", "empty", layer({}))
write("qellayerstream_fuzz", "normals", layer({0: element(normals, 32, [], 2, b"N")}))
write("qellayerstream_fuzz", "holes-and-uvs", layer({
    10: element(b"\x01\x00\x01", 1, [0, 2, 1], 3, b"holes"),
    14: element(struct.pack("<4d", 0, 0, 1, 1), 16, [1, 0], 2, b"uv"),
}))
write("qellayerstream_fuzz", "cut", layer({0: element(normals, 32, [], 2, b"N")})[:60])
# A hole record that announces three items and ends there: the slots the resize
# exposes keep bytes no bool holds, which the clone then reads.
write("qellayerstream_fuzz", "short-holes", layer({})[:50] + ints(11) + b"\x01" + ints(3))

# Value conversion: destination tag, source tag (signed bytes), then the source bytes.
def copy(dst, src, payload):
    return struct.pack("<bb", dst, src) + payload

write("qeltypecopy_fuzz", "int-to-double", copy(12, 10, ints(-7)))
write("qeltypecopy_fuzz", "double-to-string", copy(18, 12, struct.pack("<d", 2.5)))
write("qeltypecopy_fuzz", "half-to-int", copy(10, 8, b"\x00\x3c"))
write("qeltypecopy_fuzz", "matrix-to-double4", copy(15, 16, struct.pack("<16d", *range(16))))
write("qeltypecopy_fuzz", "bool-from-unknown", copy(9, 99, b""))

# Array operations: an operation byte (its value modulo 12 picks it) and its operands.
write("qelarray_fuzz", "adds-and-removes",
      b"\x00" + ints(5) + b"\x00" + ints(-3) + b"\x01\x01" + ints(9) + b"\x02\x00")
write("qelarray_fuzz", "buffers", b"\x05\x06\x07\x01\x02\x03\x04\x05\x06\x07\x08\x09\x08\x0a\x02")
write("qelarray_fuzz", "resize-and-clear", b"\x04\x09\x03\x02" + ints(4) + b"\x04\x02\x06\x0b")

# The layer stream dump reads the same streams as the layer's reader.
write("qeldump_fuzz", "empty", layer({}))
write("qeldump_fuzz", "holes-and-uvs", layer({
    10: element(b"\x01\x00\x01", 1, [0, 2, 1], 3, b"holes"),
    14: element(struct.pack("<4d", 0, 0, 1, 1), 16, [1, 0], 2, b"uv"),
}))

# OBJ text: plain faces, every corner form, indices from the end, and the statements
# that make per-polygon elements.
write("qelobj_fuzz", "triangle", b"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
write("qelobj_fuzz", "quad-uv-normal",
      b"v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n"
      b"f 1/1/1 2/2/1 3/3/1 4/4/1\n")
write("qelobj_fuzz", "negative-indices",
      b"v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf -3//-1 -2//-1 -1//-1\n")
write("qelobj_fuzz", "materials-groups-smoothing",
      b"mtllib scene.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\ng top\nusemtl red\ns 1\n"
      b"f 1 2 3\ng side\nusemtl blue\ns off\nf 1 3 4\nl 1 2\n")
