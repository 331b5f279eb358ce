# SPDX-License-Identifier: MIT
# Makes one program of the C++ in a document: awk -v document=FILE -f guide.awk FILE. One block has the whole `main`; the
# others go above it or, when they begin with "// in main", into it. Each line keeps its number for the compiler.
/^```/ { inside = $0 == "```cpp"; place = "above"; next }
!inside { next }
/^\/\/ in main$/ { place = "inside"; next }
/^int main\(/ { place = "opening" }
/^    return application.exec\(\);/ { place = "closing" }
{ text[/^#include/ ? "includes" : place] = text[/^#include/ ? "includes" : place] "#line " NR " \"" document "\"\n" $0 "\n" }
END { printf "%s", text["includes"] text["above"] text["opening"] text["inside"] text["closing"] }
