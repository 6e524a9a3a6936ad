#!/usr/bin/perl
# What a tester would script: the HTML substitutions on both sides of every pair, then a comparison.
# Usage: normalize.pl MASTER-FOLDER OUTPUT-FOLDER; prints the names of the pages that differ.
use strict;
use warnings;

sub normalized {
    my ($path) = @_;
    open(my $file, '<:raw', $path) or die "$path: $!\n";
    local $/;
    my $text = <$file>;
    for ($text) {
        s/\r//g;
        s/((\n)|(\r\n))//g;
        s/<script.*?<\/script>//gs;
        s/\bname="chart.*?"//g;
        s/\bname="next.*?"\sid="next.*?"//g;
        s/<meta name="Copyright".*?>[\r\n]*//g;
        s/<meta name="GeneratorID".*?>[\r\n]*//g;
        s/<meta name="Trademark".*?>//g;
        s/<meta http\-equiv="X\-UA\-Compatible".*?>[\r\n]*//g;
        s/on(click|load|mousemove|mouseup|keypress|keydown|dblclick|contextmenu)=".*?" *//g;
        s/ id="PRMT_[A-Za-z_0-9]+" *//g;
        s/\bcoords=".*?"//g;
        s/ +aria-labelledby="( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? *[A-Za-z_0-9.]+" *//g;
        s/ +id="[A-Za-z_0-9.]+" *//g;
        s/aria-labelledby="(_THIS_hdr[0-9]+)( _THIS_hdr[0-9]+)*( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? [A-Za-z_0-9.]+" *//g;
        s/ ctx="[0-9:]+"//g;
        s/ for="[A-Za-z_0-9\[\]]+" *//g;
        s/ name="[a-zA-Z_0-9]+" *//g;
    }
    return $text;
}

my ($masters, $outputs) = @ARGV;
opendir(my $folder, $masters) or die "$masters: $!\n";
for my $name (sort grep { /\.html$/ } readdir $folder) {
    print "$name\n" if normalized("$masters/$name") ne normalized("$outputs/$name");
}
