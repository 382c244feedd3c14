package acme.tools

import acme.Base
import acme.Other

/** Limit of all. */
const val LIMIT = 3
typealias Handler = (Int) -> Unit

/**
 * A widget.
 */
@Serializable
data class Widget(val name: String, private var size: Int = 1) : Base(name), Thing {
    private val secret = 1
    // Runs it.
    override fun run(count: Int, label: String = "a"): Thing {
        val local = 1
        return helper(count).apply { call() }
    }
    companion object { fun build() = Widget("x") }
}

interface Thing { fun run(a: Int): Thing }
enum class Color { RED, GREEN }
object Single { fun only() {} }
private fun String.twice(): String = this + this
fun after() { run { println(1) } }
