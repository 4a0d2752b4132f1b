#include "payload/Unpacking.h"

#include "files/PlainPath.h"
#include "files/Staging.h"
#include "payload/Payload.h"
#include "payload/Reading.h"
#include "process/Failure.h"

#include <algorithm>

namespace updateqm {

namespace {

constexpr size_t kLargestBundle = size_t{1} << 30U; // bytes, unpacked
constexpr size_t kMostEntries = 100'000;
constexpr size_t kLongestPath = 1024; // bytes
constexpr unsigned kProgramMode = 0755;
constexpr unsigned kFileMode = 0644;

/// A link stays inside the bundle that it is in.
bool isHarmlessLink(const std::string &path, const std::string &target) {
    if (target.empty() || target.starts_with('/') || target.find('\0') != std::string::npos) {
        return false;
    }
    auto depth = std::count(path.begin(), path.end(), '/') - 1; // folders above the link, less the bundle's own
    const std::string text = target + '/';
    for (size_t begin = 0; begin < text.size(); begin = text.find('/', begin) + 1) {
        const std::string component = text.substr(begin, text.find('/', begin) - begin);
        depth += component == ".." ? -1 : (component.empty() || component == "." ? 0 : 1);
        if (depth < 0) {
            return false;
        }
    }
    return true;
}

/// Writes the records of one bundle.
class BundleWriter {
public:
    BundleWriter(Staging &staging, std::string source, std::string bundle)
        : m_staging(staging), m_source(std::move(source)), m_bundle(std::move(bundle)) {}

    void write(const Record &record) {
        switch (record.kind) {
        case Record::Kind::Contents:
            writeContents(record.text);
            break;
        case Record::Kind::Folder:
            begin(record.text);
            m_staging.makeFolder(record.text);
            break;
        case Record::Kind::File:
            begin(record.text);
            m_file = m_staging.makeFile(record.text, kFileMode);
            break;
        case Record::Kind::Program:
            begin(record.text);
            m_file = m_staging.makeFile(record.text, kProgramMode);
            break;
        case Record::Kind::Link:
            writeLink(record.text);
            break;
        default:
            throw damaged("can't be taken apart");
        }
    }

private:
    Failure damaged(const char *why) const { return {Status::DamagedPayload, m_source, why}; }

    void begin(const std::string &path) {
        m_file.close();
        if (++m_entries > kMostEntries || path.size() > kLongestPath) {
            throw damaged("holds more than a bundle does");
        }
        requirePlainPath(path, m_source);
        if (path != m_bundle && !path.starts_with(m_bundle + '/')) {
            throw damaged("can't be taken apart");
        }
    }

    void writeContents(const std::string &piece) {
        m_size += piece.size();
        if (!m_file.isOpen() || m_size > kLargestBundle) {
            throw damaged("holds more than a bundle does");
        }
        writeAll(m_file.get(), piece, m_source);
    }

    void writeLink(const std::string &text) {
        const size_t end = std::min(text.find('\0'), text.size());
        const std::string path = text.substr(0, end);
        const std::string target = text.substr(std::min(end + 1, text.size()));
        begin(path);
        if (!isHarmlessLink(path, target)) {
            throw Failure(Status::DamagedPayload, m_source, "holds \"" + path + "\", a link that leads outside");
        }
        m_staging.makeLink(path, target);
    }

    Staging &m_staging;
    std::string m_source;
    std::string m_bundle;
    Descriptor m_file;
    size_t m_entries = 0;
    size_t m_size = 0;
};

} // namespace

Unpacking::Unpacking(const VerifiedPayload &payload, Packing packing)
    : m_source(payload.source()), m_reader(m_source, [&payload, packing](const RecordWriter &records) {
          packing == Packing::Archive ? readArchive(payload.bytes(), records) : readPackage(payload.bytes(), records);
      }) {
    Record record = m_reader.next();
    if (record.kind != Record::Kind::Text) {
        throw Failure(Status::DamagedPayload, m_source, "can't be taken apart");
    }
    m_place = std::move(record.text);
}

void Unpacking::writeTo(Staging &staging) {
    BundleWriter writer(staging, m_source, m_place.substr(m_place.rfind('/') + 1));
    for (Record record = m_reader.next(); record.kind != Record::Kind::End; record = m_reader.next()) {
        writer.write(record);
    }
}

} // namespace updateqm
