"""What house.py reports, and what it accepts."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import house

CMAKE = """
add_library(outpost_core STATIC)
target_link_libraries(outpost_core PUBLIC outpost_flags Qt5::Core)
add_library(outpost_station STATIC)
target_link_libraries(outpost_station PUBLIC outpost_core Qt5::Network
    Qt5::WebSockets)
add_library(outpost_daemon STATIC)
target_link_libraries(outpost_daemon PUBLIC outpost_station)
"""
WINDOW = "class MainWindow : public QMainWindow\n{\npublic:\n    void run();\n};\n"
LARGE = "class Large {" + "void f();" * 26 + "};"

# A member, how many functions it is, how many fields.
MEMBERS = [
    ("void run();", 1, 0),
    ("explicit Part(int a, QObject *parent = nullptr);", 1, 0),
    ("Part(int a) : a(a), b{2} { run(); }\n    void stop();", 2, 0),
    ("~Part() override = default;", 1, 0),
    ("Part(const Part &) = delete;", 0, 0),
    ("Part &operator=(Part &&) noexcept;", 1, 0),
    ("bool operator<(const Part &other) const { return a < other.a; }", 1, 0),
    ("explicit operator bool() const;", 1, 0),
    ("static QString text(const std::function<int(int)> &f);", 1, 0),
    ("template <class T> T valueOf(const QList<T> &list);", 1, 0),
    ("auto begin() const -> QList<int>::const_iterator;", 1, 0),
    ("qint64 nowMs() const { return clock(); } int a = 0;", 1, 1),
    ("void run() { if (a) { b(); } }\n    void stop();", 2, 0),
    ("int a;", 0, 1),
    ("int a, *b = nullptr, c = f(1, 2);", 0, 3),
    ("std::function<void(int, int)> onSound;", 0, 1),
    ("QHash<QString, QPair<int, int>> known;", 0, 1),
    ("const std::array<char, 2> name{'{', '\\0'};", 0, 1),
    ("std::function<qint64()> clock = [] { return qint64(0); };", 0, 1),
    ("static constexpr int maxLines = 500;", 0, 0),
    ("inline static int made = 0;", 0, 0),
    ("using Clock = std::function<qint64()>;", 0, 0),
    ("friend bool operator==(const Part &, const Part &);", 0, 0),
    ("enum class State { Idle, Open };\n    State state = State::Idle;", 0, 1),
    ("class Inner;", 0, 0),
    ("struct Inner { int a; void run(); };\n    Inner inner;", 0, 1),
    ("enum { Column = 3 } column = Column;", 0, 1),
    ("struct tm broken = {};", 0, 1),
    ("Q_OBJECT\n    Q_DISABLE_COPY(Part)\n    int a;", 0, 1),
    ("public:\n    void run();\nprivate:\n    int a;", 1, 1),
    ("// void run();\n    /* int a; */ QString b = QStringLiteral(\"};\"); // }", 0, 1),
    ("int thousand = 1'000; // it's one", 0, 1),
    ("#ifdef Q_OS_WIN\n    int a;\n#endif", 0, 1),
]


class Includes(unittest.TestCase):
    def test_run_one_way(self):
        for file, included, allowed in [
                ("base/a.h", "base/b.h", True),
                ("base/a.h", "kiwi/b.h", False),
                ("kiwi/a.h", "base/b.h", True),
                ("kiwi/a.cpp", "decode/b.h", False),
                ("decode/a.cpp", "kiwi/b.h", False),
                ("store/a.cpp", "decode/b.h", False),
                ("store/a.cpp", "display/b.h", False),
                ("display/a.cpp", "kiwi/b.h", True),
                ("display/a.cpp", "store/b.h", True),
                ("display/a.cpp", "app/mainwindow.h", False),
                ("app/a.cpp", "display/b.h", True),
                ("app/a.cpp", "daemon/b.h", False),
                ("daemon/a.cpp", "display/b.h", True),
                ("daemon/a.cpp", "app/b.h", False)]:
            with self.subTest(file=file, included=included):
                source = f'#pragma once\n\n#include <QObject>\n#include "{included}"\n'
                found = house.include_violations(file, source)
                text = f"{file.split('/')[0]}/ includes {included}"
                self.assertEqual(found, [] if allowed else [(file, 4, text)])

    def test_forms_of_the_line(self):
        for line, count in [('#include "app/a.h"', 1), ('  #  include "app/a.h"', 1),
                            ('// #include "app/a.h"', 0), ("#include <app/a.h>", 0),
                            ('#include "generated.h"', 0)]:
            with self.subTest(line=line):
                self.assertEqual(len(house.include_violations("kiwi/a.cpp", line)), count)


class Sizes(unittest.TestCase):
    def test_what_counts(self):
        for member, functions, fields in MEMBERS:
            with self.subTest(member=member):
                source = ("namespace outpost\n{\nclass Other;\n"
                          f"class Part final : public QObject\n{{\n    {member}\n}};\n}}")
                sizes = {size.name: size for size in house.class_sizes("kiwi/part.h", source)}
                self.assertEqual(sizes["Part"], ("Part", "kiwi/part.h", 4, functions, fields))

    def test_nested_and_local_classes_are_classes_too(self):
        source = ("struct A { struct B { int b; }; };\n"
                  "void f() { struct C { void run(); }; }\n"
                  "class A::D { int d; };")
        names = [size.name for size in house.class_sizes("kiwi/a.cpp", source)]
        self.assertEqual(names, ["A", "B", "C", "D"])

    def test_no_class(self):
        for source in ["enum class State { Idle };", "class Part;", "// class Part {",
                       "template <class T> void f(T t) { t.run(); }",
                       'auto text = R"json(struct Part { })json";']:
            with self.subTest(source=source):
                self.assertEqual(house.class_sizes("kiwi/a.cpp", source), [])

    def test_bounds(self):
        for name, functions, fields, count in [
                ("Part", 25, 99, 0), ("Part", 26, 0, 1), ("MainWindow", 45, 16, 0),
                ("MainWindow", 46, 16, 1), ("MainWindow", 45, 17, 1)]:
            with self.subTest(name=name, functions=functions, fields=fields):
                size = house.ClassSize(name, "app/mainwindow.h", 7, functions, fields)
                self.assertEqual(len(house.too_large(size)), count)


class Libraries(unittest.TestCase):
    def test_link_what_their_layer_may_use(self):
        for text, expected in [
                (CMAKE, []),
                ("\ntarget_link_libraries(outpost_core PUBLIC\n    Qt5::Core Qt5::Network)",
                 [("CMakeLists.txt", 2, "outpost_core links Qt5::Network")]),
                ("target_link_libraries( outpost_station PRIVATE Qt5::Widgets)",
                 [("CMakeLists.txt", 1, "outpost_station links Qt5::Widgets")]),
                ("target_link_libraries(outpost_daemon PUBLIC outpost_station Qt5::Gui)",
                 [("CMakeLists.txt", 1, "outpost_daemon links Qt5::Gui")]),
                ("target_link_libraries(outpost_daemon PUBLIC outpost_window)",
                 [("CMakeLists.txt", 1, "outpost_daemon links outpost_window")]),
                ("target_link_libraries(outpost_window PUBLIC Qt5::Widgets)", []),
                ("# target_link_libraries(outpost_core PUBLIC Qt5::Widgets)", [])]:
            with self.subTest(text=text):
                self.assertEqual(house.link_violations("CMakeLists.txt", text), expected)


class Documents(unittest.TestCase):
    def test_name_files_of_the_tree(self):
        text = "First `kiwi/link.h`,\n`kiwi/gone`, `daemon/`, `decoder/depth` and `build/dev/bin`."
        found = house.document_violations("docs/a.md", text, lambda name: name == "kiwi/link.h")
        self.assertEqual(found, [("docs/a.md", 2, "there is no kiwi/gone"),
                                 ("docs/a.md", 2, "there is no daemon/")])


class Tree(unittest.TestCase):
    def check(self, files):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            all_files = {"CMakeLists.txt": CMAKE, "app/mainwindow.h": WINDOW, **files}
            for name, text in all_files.items():
                (root / name).parent.mkdir(exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            return house.check(root)

    def test_in_order(self):
        found, sizes = self.check({"kiwi/link.h": "class Link { void run(); };",
                                   "docs/a.md": "`kiwi/link` and `kiwi/link.h` in `kiwi/`"})
        self.assertEqual(found, [])
        self.assertEqual(sizes, ["MainWindow: 1 member functions, 0 fields, 5 lines of header",
                                 "Link: 1 member functions"])

    def test_each_rule_is_held(self):
        for files, expected in [
                ({"kiwi/a.cpp": '#include "app/mainwindow.h"\n'},
                 "kiwi/a.cpp:1: kiwi/ includes app/mainwindow.h"),
                ({"store/a.cpp": LARGE},
                 "store/a.cpp:1: Large has 26 member functions, more than 25"),
                ({"sim/a.h": LARGE}, "sim/a.h:1: Large has 26 member functions, more than 25"),
                ({"app/mainwindow.h": WINDOW + "\n" * 115},
                 "app/mainwindow.h:120: 120 lines, more than 119"),
                ({"app/mainwindow.h": ""}, "app/mainwindow.h:1: 0 classes are called MainWindow"),
                ({"kiwi/CMakeLists.txt": "target_link_libraries(outpost_core PRIVATE ws2_32)"},
                 "kiwi/CMakeLists.txt:1: outpost_core links ws2_32"),
                ({"docs/a.md": "`app/mainwindow`\n`app/menus`"},
                 "docs/a.md:2: there is no app/menus"),
                ({"daemon/CMakeLists.txt":
                  "target_link_libraries(outpost_daemon PRIVATE Qt5::Widgets)"},
                 "daemon/CMakeLists.txt:1: outpost_daemon links Qt5::Widgets"),
                ({"CMakeLists.txt": CMAKE.replace("add_library(outpost_station STATIC)", "")},
                 "CMakeLists.txt:1: there is no library outpost_station")]:
            with self.subTest(expected=expected):
                self.assertEqual([str(violation) for violation in self.check(files)[0]], [expected])


if __name__ == "__main__":
    unittest.main()
