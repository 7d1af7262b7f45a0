// What other programs write is what we read, and what we write is what they read.

#include <filesystem>
#include <map>

#include "hostile/DifferentialArchives.h"

using differential::MemberGenerator;
using differential::oursIn;
using differential::run;
using differential::writeOurs;
using support::Members;
using support::TempDir;

namespace {

using Files = std::map<std::string, std::string>;

/// Names that are no UTF-8 go with the locale "C", in which programs take names for bytes.
const char* const chooseLocale = "case $n in *[13579]) LC_ALL=C;; *) LC_ALL=C.UTF-8;; esac; ";

bool hasBytesForNames(int number)
{
    return number % 2 == 1;
}

Members drawn(MemberGenerator& generator, int number, std::size_t most)
{
    Members members = generator.members(most, 1);
    if (hasBytesForNames(number)) {
        members.emplace_back("100\xff\x84/\xe4", "Latin letters");
    }
    return members;
}

/// The files below a directory by their relative paths.
Files filesBelow(const std::string& dir)
{
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) {
        if (entry.is_regular_file()) {
            const std::string path = entry.path().string();
            files[path.substr(dir.size() + 1)] = support::readFile(path);
        }
    }
    return files;
}

Files filesOf(const Members& members)
{
    Files files;
    for (const auto& [name, content] : members) {
        if (name.back() != '/') {
            files[name] = content;
        }
    }
    return files;
}

/// Packs trees of files by each of the commands, to the archive $A, and expects that we find the files.
void expectToReadWhatIsWrittenBy(const std::vector<std::string>& commands, int trees, unsigned seed)
{
    const TempDir dir;
    MemberGenerator generator(seed);
    std::vector<Members> expected;
    for (int tree = 0; tree < trees; ++tree) {
        expected.push_back(drawn(generator, tree, 12));
        for (const auto& [name, content] : expected.back()) {
            support::writeFile(dir / "in/" + std::to_string(tree) + "/" + name, content);
        }
    }
    std::string script;
    for (std::size_t number = 0; number < commands.size(); ++number) {
        script += "A=../../$n-" + std::to_string(number) + ".zip; " + commands[number] + " || exit; ";
    }
    run(dir, "for n in $(seq 0 " + std::to_string(trees - 1) + "); do " + chooseLocale +
                 "cd in/$n || exit; " + script + "cd ../..; done");
    for (int tree = 0; tree < trees; ++tree) {
        for (std::size_t number = 0; number < commands.size(); ++number) {
            const std::string name = std::to_string(tree) + "-" + std::to_string(number) + ".zip";
            EXPECT_TRUE(filesOf(oursIn(dir / name)) == filesOf(expected[static_cast<std::size_t>(tree)]))
                << "tree " << tree << ": " << commands[number];
        }
    }
}

/// Unpacks archives of ours by the command, from the archive $A into the directory $D, and expects the
/// members' bytes there.
void expectToBeUnpackedBy(const std::string& command, unsigned seed)
{
    const TempDir dir;
    MemberGenerator generator(seed);
    constexpr int count = 40;
    std::vector<Members> expected;
    for (int number = 0; number < count; ++number) {
        expected.push_back(drawn(generator, number, 12));
        writeOurs(dir / std::to_string(number) + ".zip", expected.back(), dir);
    }
    run(dir, "for n in $(seq 0 " + std::to_string(count - 1) + "); do " + chooseLocale +
                 "A=$n.zip; D=out/$n; mkdir -p $D || exit; " + command + " || exit; done");
    for (int number = 0; number < count; ++number) {
        EXPECT_TRUE(filesBelow(dir / "out/" + std::to_string(number)) ==
                    filesOf(expected[static_cast<std::size_t>(number)]))
            << "archive " << number;
    }
}

/// Writes the archives that the file "members" tells of, each in another way.
const char* const writeByPython = R"(
import random, struct, zipfile

class Pipe:  # neither seeks nor tells, so that numbers follow the data
    def __init__(self, file):
        self.write, self.flush = file.write, file.flush

def member(file):
    lengths = [int(length) for length in file.readline().split()]
    return file.read(lengths[0]), file.read(lengths[1])

one_in = lambda n: random.randrange(n) == 0
random.seed(1)
source = open('members', 'rb')
for number, line in enumerate(iter(source.readline, b'')):
    with open('%d.zip' % number, 'wb') as file:
        if one_in(4):
            file.write(b'in front' * random.randrange(50))
        with zipfile.ZipFile(Pipe(file) if one_in(3) else file, 'w') as archive:
            for name, content in [member(source) for _ in range(int(line))]:
                info = zipfile.ZipInfo(name.decode(), (random.randrange(1980, 2100), 2, 28, 23, 59, 58))
                info.compress_type = random.choice([zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED])
                info.create_system = random.choice([0, 3])
                info.comment = 'ä comment'.encode() if one_in(4) else b''
                info.extra = struct.pack('<HH4s', 0x7777, 4, b'more') if one_in(4) else b''
                if one_in(2):
                    archive.writestr(info, content, compresslevel=random.randrange(10))
                else:
                    with archive.open(info, 'w', force_zip64=one_in(2)) as stream:
                        stream.write(content)
            archive.comment = b'of the archive' * random.randrange(20) if one_in(4) else b''
)";

}  // namespace

TEST(DifferentialPrograms, pythonWritesWhatWeRead)
{
    const TempDir dir;
    MemberGenerator generator(11, 3000);
    std::vector<Members> expected(600);
    for (Members& members : expected) {
        members = generator.members(8);
    }
    support::writeFile(dir / "members", differential::flat(expected));
    differential::runPython(dir, writeByPython);
    int disagreements = 0;
    for (std::size_t number = 0; number < expected.size(); ++number) {
        disagreements += oursIn(dir / std::to_string(number) + ".zip") != expected[number];
    }
    EXPECT_EQ(disagreements, 0);
}

TEST(DifferentialPrograms, pythonReadsWhatWeWrite)
{
    const TempDir dir;
    MemberGenerator generator(12, 3000);
    std::vector<Members> expected;
    for (int number = 0; number < 600; ++number) {
        expected.push_back(drawn(generator, number, 8));
        writeOurs(dir / std::to_string(number) + ".zip", expected.back(), dir);
    }
    EXPECT_TRUE(differential::inPython(dir, 600) == differential::flat(expected));
}

// Not "-fz" into a pipe: zip 3.0 then tells of a directory at 4 GiB - 1 and writes no zip64 end record, which
// unzip, 7z, bsdtar and we refuse.
TEST(DifferentialPrograms, zipWritesWhatWeRead)
{
    expectToReadWhatIsWrittenBy(
        {"zip -qr $A .", "zip -qr0 $A .", "zip -qr9DX $A .", "zip -qr -fz $A .", "zip -qr -fd $A .",
         "zip -qr - . | cat > $A", "zip -qr0 - . | cat > $A", "echo comment | zip -qrz $A .",
         "{ zip -qr0 $A . && touch * && zip -qr $A .; }",
         "{ zip -qr $A . && { echo in front; cat $A; } > t && mv t $A; }",
         "{ zip -qr $A . && { echo in front; cat $A; } > t && mv t $A && zip -qA $A; }"},
        10, 13);
}

TEST(DifferentialPrograms, sevenZipWritesWhatWeRead)
{
    expectToReadWhatIsWrittenBy(
        {"7z a -bd -mx0 $A .", "7z a -bd -mx1 $A .", "7z a -bd -mx9 $A .", "7z a -bd -mcu=on $A .",
         "7z a -bd -mtc=off $A .", "{ 7z a -bd -mx0 $A . && touch * && 7z u -bd -mx5 $A .; }"},
        10, 14);
}

TEST(DifferentialPrograms, bsdtarWritesWhatWeRead)
{
    expectToReadWhatIsWrittenBy(
        {"bsdtar --format zip -cf $A *", "bsdtar --format zip --options zip:compression=store -cf $A *",
         "bsdtar --format zip --options zip:compression-level=9 -cf $A *",
         "bsdtar --format zip --options zip:zip64 -cf $A *", "bsdtar --format zip -cf - * | cat > $A",
         "bsdtar --format zip --options zip:compression=store -cf - * | cat > $A",
         "bsdtar --format zip --options zip:zip64 -cf - * | cat > $A"},
        10, 15);
}

TEST(DifferentialPrograms, unzipUnpacksWhatWeWrite)
{
    expectToBeUnpackedBy("unzip -qq -^ $A -d $D", 16);
}

TEST(DifferentialPrograms, sevenZipUnpacksWhatWeWrite)
{
    expectToBeUnpackedBy("7z x -bd -y -o$D $A", 17);
}

TEST(DifferentialPrograms, bsdtarUnpacksWhatWeWrite)
{
    // In the locale "C" it refuses names that are marked as UTF-8, in this one it takes the others for bytes.
    expectToBeUnpackedBy("LC_ALL=C.UTF-8 bsdtar -xf $A -C $D", 18);
}
