// The smallest images of each kind, which differ by their bytes.
const zlib = require("zlib");

function crc(bytes) {
    let value = ~0;
    for (const byte of bytes) {
        value ^= byte;
        for (let bit = 0; bit < 8; ++bit) value = (value >>> 1) ^ (value & 1 ? 0xedb88320 : 0);
    }
    return ~value >>> 0;
}

function chunk(type, content) {
    const bytes = Buffer.concat([Buffer.from(type, "latin1"), content]);
    const [length, checksum] = [Buffer.alloc(4), Buffer.alloc(4)];
    length.writeUInt32BE(content.length);
    checksum.writeUInt32BE(crc(bytes));
    return Buffer.concat([length, bytes, checksum]);
}

// One pixel of 8 bits per channel.
function png(red, green, blue) {
    const header = Buffer.from([0, 0, 0, 1, 0, 0, 0, 1, 8, 2, 0, 0, 0]);
    return Buffer.concat([
        Buffer.from("\x89PNG\r\n\x1a\n", "latin1"),
        chunk("IHDR", header),
        chunk("IDAT", zlib.deflateSync(Buffer.from([0, red, green, blue]))),
        chunk("IEND", Buffer.alloc(0)),
    ]);
}

// A grey block of 8 by 8 pixels, whose Huffman tables have one code each.
function jpeg() {
    const segment = (marker, content) => [0xff, marker, 0, content.length + 2, ...content];
    const lengths = [1, ...Array(15).fill(0)];
    return Buffer.from([
        ...[0xff, 0xd8],
        ...segment(0xe0, [...Buffer.from("JFIF\0"), 1, 1, 0, 0, 1, 0, 1, 0, 0]),
        ...segment(0xdb, [0, ...Array(64).fill(1)]),
        ...segment(0xc0, [8, 0, 8, 0, 8, 1, 1, 0x11, 0]),
        ...segment(0xc4, [0x00, ...lengths, 0]),
        ...segment(0xc4, [0x10, ...lengths, 0]),
        ...segment(0xda, [1, 1, 0, 0, 63, 0]),
        ...[0x3f, 0xff, 0xd9],
    ]);
}

// One pixel without compression of colours.
function webp() {
    return Buffer.from("UklGRhoAAABXRUJQVlA4TA0AAAAvAAAAEAcQERGIiP4HAA==", "base64");
}

// One pixel of 8 bits per channel, of four channels.
function ktx2() {
    const header = Buffer.alloc(104);
    Buffer.from("\xabKTX 20\xbb\r\n\x1a\n", "latin1").copy(header);
    // Format, size of its type, width, height, depth, layers, faces, levels, supercompression.
    [37, 1, 1, 1, 0, 0, 1, 1, 0].forEach((value, at) => header.writeUInt32LE(value, 12 + at * 4));
    header.writeBigUInt64LE(104n, 80); // offset and lengths of the level
    header.writeBigUInt64LE(4n, 88);
    header.writeBigUInt64LE(4n, 96);
    return Buffer.concat([header, Buffer.from([1, 2, 3, 255])]);
}

module.exports = { png, jpeg, webp, ktx2 };
