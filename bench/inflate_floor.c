/* The least that unpacking takes: every entry of a ZIP archive inflated, its checksum computed, nothing written. */

#include <fcntl.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <zlib.h>

static uint32_t number(const unsigned char *at, int size) {
    uint32_t value = 0;
    while (size-- > 0) {
        value = value << 8 | at[size];
    }
    return value;
}

int main(int count, char **arguments) {
    static unsigned char buffer[1 << 16];
    struct stat attributes;
    const int file = count == 2 ? open(arguments[1], O_RDONLY) : -1;
    if (file < 0 || fstat(file, &attributes) != 0) {
        return 1;
    }
    const unsigned char *at = mmap(NULL, (size_t)attributes.st_size, PROT_READ, MAP_PRIVATE, file, 0);
    z_stream stream;
    memset(&stream, 0, sizeof stream);
    if (at == MAP_FAILED || inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        return 1;
    }
    for (; memcmp(at, "PK\3\4", 4) == 0;) {
        const uint32_t packed = number(at + 18, 4);
        const unsigned char *contents = at + 30 + number(at + 26, 2) + number(at + 28, 2);
        uLong sum = crc32(0, NULL, 0);
        if (packed > 0 && number(at + 8, 2) == Z_DEFLATED) {
            inflateReset(&stream);
            stream.next_in = (unsigned char *)(uintptr_t)contents;
            stream.avail_in = packed;
            int status = Z_OK;
            while (status == Z_OK) {
                stream.next_out = buffer;
                stream.avail_out = sizeof buffer;
                status = inflate(&stream, Z_NO_FLUSH);
                sum = crc32(sum, buffer, (uInt)(sizeof buffer - stream.avail_out));
            }
            if (status != Z_STREAM_END || sum != number(at + 14, 4)) {
                return 1;
            }
        }
        at = contents + packed;
    }
    return 0;
}
