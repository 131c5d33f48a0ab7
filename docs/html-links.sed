# Pages name files by where they lie in the tree, so that they can be followed there; the HTML pages lie in one place.
s,](\(\.\./\)*examples/,](examples/,g
s,\[`\([^`]*\)`\](\(\.\./\)*\(core\|fileformat\)/[a-z0-9/]*/\([A-Za-z0-9]*\)\.h),[\1](@ref \4),g
# Doxygen 1.9.4 leads to pages, not to their headings.
s,](\([^)#]*\.md\)#[^)]*),](\1),g
