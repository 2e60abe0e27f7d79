#!/usr/bin/perl
# The stack that procedures need at worst, themselves and all that they call within the given objects;
# the C library's and the compiler's own procedures are not counted. A call that ends a procedure
# counts like any other, though the compiler may have freed the caller's frame before it.
#
# usage: stack_use.pl READELF RULES PROCEDURES OBJECT...
#     RULES       says where indirect calls go and how often a loop is run through; see stack_rules
#     PROCEDURES  a list with # comments
#     OBJECT      compiled with -ffunction-sections -fcallgraph-info=su, which leaves a .ci beside it
# Prints for each procedure: bytes, a tab, its name, a tab, the path with the frame of each on it.
#
# It fails where it would have to guess: at an indirect call that no rule resolves, a loop that no
# rule bounds, a frame without a bound, a procedure whose address goes where no rule follows it, and
# where the compiler's call graph lacks a procedure or a call that the object has.
use strict;
use warnings;

if (@ARGV && $ARGV[0] =~ /^(?:-h|--help)$/) {
    open(my $own, '<', $0) or die "$0: $!\n";
    while (<$own>) {
        last unless /^#/;
        print if $. > 1 && s/^# ?//;
    }
    exit 0;
}
my ($readelf, $rules_file, $list_file, @objects) = @ARGV;
unless (@objects) {
    print STDERR "usage: stack_use.pl READELF RULES PROCEDURES OBJECT...\n";
    exit 2;
}

my $call_type = qr/^R_ARM_(?:CALL|JUMP24|PLT32|PC24|THM_CALL|THM_JUMP24)$/;

my %frame;     # procedure -> bytes; a local one's key has its object before it
my %name;      # procedure -> as the source calls it
my %calls;     # procedure -> { procedure }
my %indirect;  # procedure -> place of an indirect call in it
my %procedure; # procedure -> its object, by the objects' symbols
my %taken;     # procedure whose code takes addresses -> { procedure }
my %table;     # object -> { procedure }, the addresses in its constants
my %coded;     # procedure -> { procedure }, the calls in its code
my @findings;

sub finding { push @findings, join('', @_) }
sub show { return $name{$_[0]} // $_[0] }

sub lines_of {
    my @command = @_;
    open(my $pipe, '-|', @command) or die "$command[0]: $!\n";
    my @lines = <$pipe>;
    close($pipe) or die "stack_use.pl: failed: @command\n";
    return @lines;
}

# The first name before a parenthesis: that of the procedure, or the one that a lambda stands in. A
# lambda in a template goes by what the template is made for.
sub name_in {
    my ($label, $symbol) = @_;
    return "$1/lambda" if $label =~ /^static .*? \w+<(?:\{anonymous\}::)?(\w+).*::<lambda/;
    if ($label =~ /(\w+)>? ?\(/) {
        my $name = $1;
        return $label =~ /::<lambda/ ? "$name/lambda" : $name;
    }
    return $symbol =~ /^_Z(\d+)(\w+)/ ? substr($2, 0, $1) : $symbol =~ s/.*://r;
}

# The objects: procedures, and the addresses and calls in code and constants. --------------------

my %symbols; # object -> { symbol -> key }
my %global;  # symbol -> key

for my $object (@objects) {
    for (lines_of($readelf, '-sW', $object)) {
        my (undef, undef, undef, $type, $bind, undef, $section, $symbol) = split;
        next unless ($type // '') eq 'FUNC' && $section ne 'UND';
        my $key = $bind eq 'LOCAL' ? "$object:$symbol" : $symbol;
        $symbols{$object}{$symbol} = $key;
        $global{$symbol} = $key if $bind ne 'LOCAL';
        $procedure{$key} = $object;
    }
}

# The procedure that a symbol stands for in an object; a local one also goes by its section.
sub resolve {
    my ($object, $symbol) = @_;
    $symbol =~ s/^\.text\.(?:(?:unlikely|startup|hot|exit)\.)?//;
    return $symbols{$object}{$symbol} // $global{$symbol};
}

for my $object (@objects) {
    my ($section, $code);
    for (lines_of($readelf, '-rW', $object)) {
        if (/^Relocation section '\.rela?(\.[^']*)'/) {
            $section = $1;
            $code = $section =~ /^\.text/ ? resolve($object, $section) : undef;
            next;
        }
        my (undef, undef, $type, undef, $symbol) = split;
        next unless defined $symbol && $type =~ /^R_/ && $section !~ /^\.ARM\.exidx/;
        my $target = resolve($object, $symbol) // next;
        if ($section !~ /^\.text/) {
            $table{$object}{$target} = 1;
        } elsif (!defined $code) {
            finding("$object: code outside a procedure's own section: $section");
        } elsif ($type =~ $call_type) {
            $coded{$code}{$target} = 1;
        } elsif ($target ne $code) {
            $taken{$code}{$target} = 1;
        }
    }
}

# The compiler's call graph. ---------------------------------------------------------------------

for my $object (@objects) {
    (my $graph = $object) =~ s/\.o$/.ci/;
    open(my $file, '<', $graph) or die "stack_use.pl: $graph: $!\n";
    my $key_of = sub {
        my ($symbol) = $_[0] =~ /([^:]*)$/;
        return $symbols{$object}{$symbol} // $global{$symbol} // $symbol;
    };
    while (<$file>) {
        if (/^node: \{ title: "([^"]*)" label: "(.*?)"(?: shape : ellipse)? \}/) {
            my ($title, $label) = ($1, $2);
            my $key = $key_of->($title);
            my ($text, $bytes, $kind) = $label =~ /^(.*?)\\n.*\\n(\d+) bytes \(([a-z,]*)\)/ or next;
            $name{$key} = name_in($text, $title);
            $frame{$key} = $bytes if $bytes >= ($frame{$key} // 0);
            $calls{$key} //= {};
            finding("the frame of $name{$key} has no bound: it grows as it runs ($kind)")
                if $kind =~ /dynamic/ && $kind !~ /bounded/;
        } elsif (/^edge: \{ sourcename: "([^"]*)" targetname: "([^"]*)"(?: label: "([^"]*)")? \}/) {
            my ($from, $to, $place) = ($key_of->($1), $2, $3);
            if ($to eq '__indirect_call') {
                $indirect{$from} = $place;
            } else {
                $calls{$from}{ $key_of->($to) } = 1;
            }
        } elsif (!/^graph: \{|^\}$|^node: .* shape : ellipse \}/) {
            finding("$graph: not understood: ", $_ =~ s{\n}{}r);
        }
    }
    close($file);
}

for my $key (sort keys %procedure) {
    finding("no stack size of $key in $procedure{$key}") if !exists $frame{$key};
    for my $target (sort keys %{ $coded{$key} // {} }) {
        finding(show($key), ' calls ', show($target), ', which the call graph lacks')
            if !$calls{$key}{$target};
    }
}

# The rules. -------------------------------------------------------------------------------------

my (%by_table, %by_argument, @single);
open(my $rules, '<', $rules_file) or die "stack_use.pl: $rules_file: $!\n";
while (<$rules>) {
    next if /^#|^\s*$/;
    my ($kind, $first, $second) = split;
    if ($kind eq 'table' && defined $second) { $by_table{$first} = $second }
    elsif ($kind eq 'argument' && defined $first) { $by_argument{$first} = 1 }
    elsif ($kind eq 'single' && defined $first) { push @single, $first }
    else { finding("$rules_file:$.: neither table, argument nor single") }
}
close($rules);

my %followed; # procedures whose addresses a rule follows
my %runs;     # procedure that calls what its caller hands over -> 1
my %rule_used;
for my $key (sort keys %indirect) {
    my $who = show($key);
    if (my $source = $by_table{$who}) {
        $rule_used{"table $who"} = 1;
        my ($object) = grep { m{/\Q$source\E\.o$} } @objects;
        my @targets = sort keys %{ defined $object ? $table{$object} // {} : {} };
        finding("$rules_file: no procedure's address in the tables of $source") if !@targets;
        $calls{$key}{$_} = 1 for @targets;
        $followed{"$object $_"} = 1 for @targets;
    } elsif ($by_argument{$who}) {
        $rule_used{"argument $who"} = 1;
        $runs{$key} = 1;
    } else {
        finding("unresolved: $who calls through a pointer ($indirect{$key}); ",
            "$rules_file has to say where to");
    }
}
finding("$rules_file: $_: no such indirect call") for grep { !$rule_used{$_} }
    ((map { "table $_" } sort keys %by_table), (map { "argument $_" } sort keys %by_argument));

# Each caller of a procedure that runs what it is handed gets one of its own, which calls just that.
for my $caller (sort keys %calls) {
    for my $runner (grep { $runs{$_} } sort keys %{ $calls{$caller} }) {
        my @targets = sort keys %{ $taken{$caller} // {} };
        if (!@targets) {
            finding('unresolved: ', show($caller), ' hands ', show($runner),
                ' a pointer that it has not taken itself');
            next;
        }
        my $own = "$runner for $caller";
        ($frame{$own}, $name{$own}) = ($frame{$runner}, $name{$runner});
        $calls{$own} = { %{ $calls{$runner} }, map { $_ => 1 } @targets };
        delete $calls{$caller}{$runner};
        $calls{$caller}{$own} = 1;
        $followed{"$caller $_"} = 1 for @targets;
    }
}
for my $holder ([\%taken, 'code of '], [\%table, 'tables of ']) {
    my ($addresses, $where) = @$holder;
    for my $key (sort keys %$addresses) {
        for my $target (grep { !$followed{"$key $_"} } sort keys %{ $addresses->{$key} }) {
            finding('unresolved: who calls ', show($target), ', whose address is in the ', $where,
                show($key), '?');
        }
    }
}

# The worst path. A state is a procedure and the "single" ones on the path to it and in it. ---------

my %single; # procedure -> bit
for my $i (0 .. $#single) {
    my @keys = grep { show($_) eq $single[$i] } sort keys %frame;
    finding("$rules_file: single $single[$i]: no loop goes through such a procedure")
        if !grep { calls_itself($_) } @keys;
    $single{$_} = 1 << $i for @keys;
}

sub calls_itself {
    my ($key) = @_;
    my %seen;
    my @todo = keys %{ $calls{$key} };
    while (defined(my $callee = pop @todo)) {
        return 1 if $callee eq $key;
        push @todo, keys %{ $calls{$callee} // {} } if !$seen{$callee}++;
    }
    return 0;
}

my (%worst, %next, %open, @path);

sub worst {
    no warnings 'recursion';
    my ($key, $used) = @_;
    return 0 if !exists $frame{$key}; # the C library's
    my $state = "$used $key";
    return $worst{$state} if exists $worst{$state};
    if ($open{$state}) {
        my @loop = map { show($_) } @path;
        shift @loop while $loop[0] ne show($key);
        die "stack_use.pl: a loop that no rule bounds: ", join(' > ', @loop, show($key)), "\n";
    }
    $open{$state} = 1;
    push @path, $key;
    my $deepest = 0;
    for my $callee (sort keys %{ $calls{$key} }) {
        my $bit = $single{$callee} // 0;
        next if $used & $bit;
        my $bytes = worst($callee, $used | $bit);
        ($deepest, $next{$state}) = ($bytes, [$callee, $used | $bit]) if $bytes > $deepest;
    }
    pop @path;
    delete $open{$state};
    return $worst{$state} = $frame{$key} + $deepest;
}

if (@findings) {
    print STDERR "stack_use.pl: $_\n" for @findings;
    exit 1;
}

open(my $list, '<', $list_file) or die "stack_use.pl: $list_file: $!\n";
while (<$list>) {
    next if /^#|^\s*$/;
    my ($root) = split;
    my $key = $global{$root} // die "stack_use.pl: $list_file: no procedure $root in the objects\n";
    my $start = $single{$key} // 0;
    my $bytes = worst($key, $start);
    my @steps;
    for (my $state = [$key, $start]; $state; $state = $next{"$state->[1] $state->[0]"}) {
        push @steps, show($state->[0]) . " $frame{$state->[0]}";
    }
    print join("\t", $bytes, $root, join(' > ', @steps)), "\n";
}
close($list);
