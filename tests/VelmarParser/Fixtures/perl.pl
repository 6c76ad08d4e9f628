#!/usr/bin/perl
use strict;
use warnings;

my %counts;
my @names = ("rose", "bean");

sub total {
    my ($first, $second) = @_;
    return $first + $second;
}

foreach my $name (@names) {
    if ($name eq "rose") {
        $counts{$name} = 2;
    } else {
        $counts{$name} = total(1, 2);
    }
}

while (my $line = <STDIN>) {
    chomp($line);
    print "$line\n";
}

print "done\n";
