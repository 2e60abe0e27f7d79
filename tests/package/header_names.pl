#!/usr/bin/perl
# Prints what public headers declare beside their entries, a line each: the types, constants, records
# and fields of tests/package/record_layout.txt, by name. Numbers of commands and typed calls are left
# out: check_command_names.sh has both. Fails where a header has something that it cannot read, so that
# nothing goes unnoticed.
# usage: header_names.pl INCLUDE_DIR
use strict;
use warnings;
use File::Find;

my ($include) = @ARGV;
my @headers;
find({ wanted => sub { push @headers, $_ if /\.h$/ }, no_chdir => 1 }, "$include/maint");
@headers or die "no header in $include/maint\n";

my $failed = 0;
sub unknown
{
    my ($header, $text) = @_;
    $text =~ s/\s+/ /g;
    print STDERR "$header has something that is neither type, constant, record nor entry: $text\n";
    $failed = 1;
}

for my $path (sort @headers) {
    (my $header = $path) =~ s{^\Q$include\E/}{};
    open my $file, '<', $path or die "$path: $!\n";
    my $text = do { local $/; <$file> };
    $text =~ s{/\*.*?\*/|//[^\n]*}{ }gs;
    $text =~ s/\\\n/ /g;

    # Lines of the preprocessor
    for my $line ($text =~ /^[ \t]*#[ \t]*(.*?)[ \t]*$/mg) {
        next if $line =~ /^(?:include|ifndef|ifdef|if|else|endif|undef)\b/;
        next if $line =~ /^define\s+\w+_H$/;
        next if $line =~ /^define\s+(?:MAINT_API|MAINT_C_BEGIN|MAINT_C_END)\b/;
        # What declares the typed calls
        next if $header eq 'maint/typed_call.h' &&
            $line =~ /^define\s+MAINT_(?:COMMAND|COMMAND_IN|COMMAND_ALONE|COMMAND_TYPES|ONLY_READ)\(/;
        if ($line =~ /^define\s+(\w+)\s+\S/) { print "constant $1\n" }
        else { unknown($header, "#$line") }
    }
    $text =~ s/^[ \t]*#.*$//mg;

    # Declarations
    $text =~ s/\bMAINT_C_(?:BEGIN|END)\b//g;
    if ($header eq 'maint/typed_call.h') {
        my $declared = 'namespace maint { extern "C++" { template <DeviceCommandCode kCode> struct Command; } }';
        my $spaced = join '\s+', map { quotemeta } split / /, $declared;
        $text =~ s/^\s*$spaced//;
    }
    while ($text =~ /\S/) {
        if ($text =~ s/^\s*MAINT_API\s[^;{}]*\)\s*;//) {
            next;
        } elsif ($text =~ s/^\s*MAINT_COMMAND(?:_IN)?\(\w+, \w+, \w+\)//) {
            next;
        } elsif ($text =~ s/^\s*MAINT_COMMAND_ALONE\(\w+, \w+\)//) {
            next;
        } elsif ($text =~ s/^\s*typedef\s+[\w ]+?\s+(\w+)\s*;//) {
            print "type $1\n";
        } elsif ($text =~ s/^\s*enum\s*\{([^{}]*)\}\s*;//) {
            next if $header eq 'maint/device_commands.h';
            for my $part (split /,/, $1) {
                next if $part !~ /\S/;
                if ($part =~ /^\s*(\w+)\s*(?:=.*)?$/s) { print "constant $1\n" }
                else { unknown($header, $part) }
            }
        } elsif ($text =~ s/^\s*typedef\s+struct\s+(\w+)\s*\{([^{}]*)\}\s*(\w+)\s*;//) {
            my ($tag, $body, $name) = ($1, $2, $3);
            print "record $name\n";
            unknown($header, "struct $tag ... $name") if $tag ne $name;
            while ($body =~ s/^\s*([^;]*);//) {
                my $field = $1;
                if ($field =~ /^\w+\s+(\w+)\s*(?:\[\s*\w+\s*\]\s*)*$/) { print "field $name $1\n" }
                else { unknown($header, "$name ... $field") }
            }
            unknown($header, "$name ... $body") if $body =~ /\S/;
        } else {
            $text =~ /^\s*(.{1,60})/s;
            unknown($header, $1);
            last;
        }
    }
}
exit $failed;
