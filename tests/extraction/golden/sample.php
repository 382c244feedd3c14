<?php
namespace Acme\Tools;

use Acme\Base;
use Acme\Other as Alias;

/**
 * A widget.
 */
#[Attribute]
final class Widget extends Base implements Thing
{
    use Loggable;
    const LIMIT = 3;
    private string $name = 'x';

    /** Makes one. */
    public function __construct(private int $count) { parent::__construct(); }

    protected static function secret(?Thing $a): void { helper($a); $a->run(); new Alias(); }
}

interface Thing { public function run(int $a): string; }
trait Loggable { abstract function log(); }
enum Color: string { case Red = 'r'; }

function broken( { }

// Adds.
function add($a, $b = 1)
{
    return $a + $b;
}
