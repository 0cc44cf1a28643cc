# Completion of vexcov and the programs beside it, for fish. To try it: source this file.

function __vexcov_has -d 'One of the words stands in front of the cursor'
    for word in (commandline -opc)[2..]
        contains -- $word $argv
        and return 0
    end
    return 1
end

function __vexcov_lacks -d 'None of the words does'
    not __vexcov_has $argv
end

function __vexcov_files -a ending -d 'Files with this ending, and directories on the way to them'
    __fish_complete_path (commandline -ct) | string match -r '^[^\t]*(?:/|\\'$ending')(?=\t|$)'
end

function __vexcov_command -d 'The command behind the dashes of vexcov-run'
    set -l words (commandline -opc) (commandline -ct)
    set -l dashes (contains -i -- -- $words)
    and complete -C (string join -- ' ' $words[(math $dashes + 1)..])
end

function __vexcov_dashes -d 'Two dashes, which all but vexcov take, too'
    __vexcov_lacks --
    and string match -q -- '--*' (commandline -ct)
end

function __vexcov_long_options
    set -l words (commandline -opc)
    complete -C "$words[1] -" | string replace -r '^-' -- --
end

function __vexcov_dashes_before -d 'Two dashes begin the word in front of the cursor'
    __vexcov_lacks --
    and string match -q -- '--*' (commandline -opc)[-1]
end

function __vexcov_long_value
    set -l words (commandline -opc)
    complete -C (string join -- ' ' $words[1] (string sub -s 2 -- $words[-1]) (commandline -ct))
end

# vexcov, and vexcov-run, which hands these on to it.
for program in vexcov vexcov-run
    complete -c $program -f
    complete -c $program -o prj -x -d 'Name of the project'
    complete -c $program -o counts -d 'Show how often blocks were executed'
    complete -c $program -o nopartial -d 'Show code covered in part as covered'
    complete -c $program -o demang -d 'Show C++ functions with their arguments'
    complete -c $program -o comp -r -F -d 'List of the files of interest'
    complete -c $program -o ref -x -a '(__vexcov_files .dpi)' -d 'Dynamic profile of the reference'
    complete -c $program -o spi -x -a '(__vexcov_files .spi)' -d 'Static profile'
    complete -c $program -o dpi -x -a '(__vexcov_files .dpi)' -d 'Dynamic profile'
    complete -c $program -o mname -x -d 'Name of the owner of the pages'
    complete -c $program -o maddr -x -d 'Mail address of the owner'
    complete -c $program -o onelinedsbl -x -d 'Comment that takes out its line'
    complete -c $program -o beginblkdsbl -x -d 'Comment that begins lines to take out'
    complete -c $program -o endblkdsbl -x -d 'Comment that ends them'
    complete -c $program -o bcolor -x -d 'Colour of uncovered blocks'
    complete -c $program -o fcolor -x -d 'Colour of uncovered functions'
    complete -c $program -o pcolor -x -d 'Colour of code covered in part'
    complete -c $program -o ccolor -x -d 'Colour of covered code'
    complete -c $program -o ucolor -x -d 'Colour of text without code'
    complete -c $program -o xcolor -x -d 'Colour of lines taken out'
    complete -c $program -o txtfcvrg -r -F -d 'Write functions as text'
    complete -c $program -o xmlfcvrg -r -F -d 'Write functions as XML'
    complete -c $program -o txtbcvrgfull -r -F -d 'Write blocks as text'
    complete -c $program -o xmlbcvrgfull -r -F -d 'Write blocks as XML'
    complete -c $program -o help -d 'Print a usage text'
end
complete -c vexcov -o nopmeter -d 'No progress meter'

# What those have in common that show coverage in another way.
for program in vexcov-check vexcov-export vexcov-site
    complete -c $program -f
    complete -c $program -o spi -x -a '(__vexcov_files .spi)' -d 'Static profile'
    complete -c $program -o dpi -x -a '(__vexcov_files .dpi)' -d 'Dynamic profile'
    complete -c $program -o ref -x -a '(__vexcov_files .dpi)' -d 'Dynamic profile of the reference'
    complete -c $program -o comp -r -F -d 'List of the files of interest'
    complete -c $program -o root -x -a '(__fish_complete_directories)' -d 'Directory that names are relative to'
    complete -c $program -o prj -x -d 'Name of the project'
    complete -c $program -o nopartial -d 'Take code covered in part as covered'
    complete -c $program -o onelinedsbl -x -d 'Comment that takes out its line'
    complete -c $program -o beginblkdsbl -x -d 'Comment that begins lines to take out'
    complete -c $program -o endblkdsbl -x -d 'Comment that ends them'
    complete -c $program -o help -d 'Print a usage text'
    complete -c $program -o version -d 'Print the version'
end

complete -c vexcov-check -o min -x -a 'blocks= functions= lines=' -d 'Floor of all files'
complete -c vexcov-check -o min-file -x -a 'blocks= functions= lines=' -d 'Floor of each file'
complete -c vexcov-check -o baseline -x -a '(__vexcov_files .json)' -d 'Figures to hold'
complete -c vexcov-check -o tolerance -x -d 'Points they may fall by'
complete -c vexcov-check -o diff -r -F -d 'Count the lines that a diff adds'
complete -c vexcov-check -o max-uncovered -x -d 'Most uncovered lines of a diff'
complete -c vexcov-check -o strip -x -d 'Folders to take off names in the diff'
complete -c vexcov-check -o format -x -a 'text markdown github json' -d 'Form of the result'

set -l formats cobertura lcov sonar json markdown github text
complete -c vexcov-export -n "__vexcov_lacks $formats" -a "$formats" -d Format
for format in $formats
    complete -c vexcov-export -o $format -r -F -d "Write $format to a file, too"
end
complete -c vexcov-export -o o -r -F -d 'File to write'
complete -c vexcov-export -o timestamp -x -d 'cobertura: time of the report'
complete -c vexcov-export -o split -x -d 'cobertura: most bytes of a part'
complete -c vexcov-export -o diff -r -F -d 'github: only lines of this diff'
complete -c vexcov-export -o strip -x -d 'github: folders to take off names in the diff'
complete -c vexcov-export -o functions -d 'text: functions instead of files'
complete -c vexcov-export -o sort -x -a 'name blocks functions lines uncovered' -d 'text: order'

complete -c vexcov-import -f
complete -c vexcov-import -n '__vexcov_lacks clang gcc lcov' -a 'clang gcc lcov' -d Format
complete -c vexcov-import -n '__vexcov_has clang gcc' -F
complete -c vexcov-import -n '__vexcov_has lcov' -a '(__vexcov_files .info)'
complete -c vexcov-import -o spi -x -a '(__vexcov_files .spi)' -d 'Static profile to write'
complete -c vexcov-import -o dpi -x -a '(__vexcov_files .dpi)' -d 'Dynamic profile to write'
complete -c vexcov-import -o root -x -a '(__fish_complete_directories)' -d 'Directory of the sources'
complete -c vexcov-import -o runs -x -d 'Number of runs'
complete -c vexcov-import -o instances -d 'Keep instances of templates apart'
complete -c vexcov-import -o all -d 'Keep sources outside of -root'
complete -c vexcov-import -o gcov -x -a '(__fish_complete_command)' -d 'gcc: gcov to run'
complete -c vexcov-import -o jobs -x -d 'gcc: runs of gcov at once'
complete -c vexcov-import -o help -d 'Print a usage text'
complete -c vexcov-import -o version -d 'Print the version'

complete -c vexcov-profile -f
complete -c vexcov-profile -n '__vexcov_lacks show check merge' -a show -d 'Print a profile'
complete -c vexcov-profile -n '__vexcov_lacks show check merge' -a check -d 'Find what a report would hide'
complete -c vexcov-profile -n '__vexcov_lacks show check merge' -a merge -d 'Add profiles up'
complete -c vexcov-profile -n '__vexcov_has show check merge' -a '(__vexcov_files .dpi)'
complete -c vexcov-profile -o functions -d 'show: a table'
complete -c vexcov-profile -o json -d 'show: JSON'
complete -c vexcov-profile -o o -x -a '(__vexcov_files .dpi)' -d 'merge: profile to write'
complete -c vexcov-profile -o newest -d 'merge: the newest profile decides'
complete -c vexcov-profile -o spi -x -a '(__vexcov_files .spi)' -d 'Static profile'
complete -c vexcov-profile -o help -d 'Print a usage text'
complete -c vexcov-profile -o version -d 'Print the version'

complete -c vexcov-run -n '__vexcov_has --' -a '(__vexcov_command)'
complete -c vexcov-run -o objects -r -F -d 'Where programs or notes are'
complete -c vexcov-run -o o -x -a '(__fish_complete_directories)' -d 'Directory of the report'
complete -c vexcov-run -o root -x -a '(__fish_complete_directories)' -d 'Directory of the sources'
complete -c vexcov-run -o all -d 'Keep sources outside of -root'
complete -c vexcov-run -o clang -d 'Take the counts of clang'
complete -c vexcov-run -o gcc -d 'Take the counts of GCC'
complete -c vexcov-run -o gcov -x -a '(__fish_complete_command)' -d 'gcov to run'
complete -c vexcov-run -o keep -d 'Keep the profiles'
complete -c vexcov-run -o version -d 'Print the version'

complete -c vexcov-site -o o -x -a '(__fish_complete_directories)' -d 'Directory to write to'
complete -c vexcov-site -o title -x -d 'Title of the start page'
complete -c vexcov-site -o baseline -x -a '(__vexcov_files .json)' -d 'Figures of an older run'
complete -c vexcov-site -o diff -r -F -d 'Diff whose lines get a page'
complete -c vexcov-site -o css -x -a '(__vexcov_files .css)' -d 'Style sheet to add'

for program in vexcov-check vexcov-export vexcov-import vexcov-profile vexcov-run vexcov-site
    complete -c $program -n __vexcov_dashes -a '(__vexcov_long_options)'
    complete -c $program -n __vexcov_dashes_before -a '(__vexcov_long_value)'
end
